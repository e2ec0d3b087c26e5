#include "files/selected_channel.h"

#include <utility>

#include "console/text.h"
#include "core/data_types.h"
#include "files/measurement_file.h"

namespace tool {

selected_channel::selected_channel(tdms::group in, tdms::channel one)
    : group(std::move(in)), channel(std::move(one))
{
    count_values();
}

void selected_channel::count_values()
{
    type = channel.type();
    count = channel.size();
    lost = channel.lost();
}

std::vector<selected_channel> channels_of(const tdms::group& g)
{
    std::vector<selected_channel> channels;
    for (const tdms::channel& c : g.channels()) channels.emplace_back(g, c);
    return channels;
}

std::vector<selected_channel> all_channels(const tdms::file& file)
{
    std::vector<selected_channel> all;
    for (const tdms::group& g : file.groups()) {
        for (const tdms::channel& c : g.channels()) all.emplace_back(g, c);
    }
    return all;
}

std::string lost_values(const selected_channel& c)
{
    const std::string lost = number_of(c.lost, "value");
    const bool supported = c.type == TDMS_TYPE_STRING ||
                           tdms_impl::DataSize.at(static_cast<std::uint32_t>(c.type)) != 0;
    return supported ? lost + " lost: stated but not stored in the file"
                     : lost + " of " + type_name(c.type) + " cannot be read";
}

std::string string_property(const tdms::object& of, std::string_view name)
{
    const tdms::property_map all = of.properties();
    if (!all.contains(name)) return {};
    const tdms::property_value value = all.at(name);
    const auto* const text = std::get_if<std::string>(&value);
    return text == nullptr ? "" : *text;
}

}  // namespace tool
