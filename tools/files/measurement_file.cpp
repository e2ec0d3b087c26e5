#include "files/measurement_file.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <system_error>
#include <utility>

#include "console/report.h"
#include "console/text.h"
#include "core/data_types.h"
#include "files/segments.h"

namespace tool {
namespace {

// How many characters must be changed, added or left out to make one text of the other.
std::size_t edit_distance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i != one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j != other.size(); ++j) {
            const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// The channel or group that may have been meant; empty if none is like the name.
std::string similar_name(const tdms::file& file, std::string_view name)
{
    std::string best;
    std::size_t least = std::max<std::size_t>(name.size() / 3, 2) + 1;
    const auto consider = [&](const std::string& candidate, std::string_view own) {
        const bool is_begin = candidate.starts_with(name) || own.starts_with(name);
        const std::size_t distance = own == name ? 0
                                     : is_begin  ? 1
                                                 : edit_distance(name, candidate);
        if (distance >= least) return;
        least = distance;
        best = candidate;
    };
    for (const tdms::group& g : file.groups()) {
        const std::string group = g.name();
        consider(group, group);
        for (const tdms::channel& c : g.channels()) {
            const std::string own = c.name();
            std::string full = group + '/';
            full.append(own);
            consider(full, own);
        }
    }
    return best;
}

bool add_group(std::vector<selected_channel>& to, const tdms::group& g)
{
    for (const tdms::channel& c : g.channels()) to.emplace_back(g, c);
    return true;
}

bool add_channel(std::vector<selected_channel>& to, const tdms::group& g, const tdms::channel& c)
{
    to.emplace_back(g, c).named = true;
    return true;
}

// A group's name holds no slash.
bool add_exact(std::vector<selected_channel>& to, const tdms::file& file, std::string_view name)
{
    const std::size_t slash = name.find('/');
    const std::string_view group = name.substr(0, slash);
    if (!file.contains(group)) return false;
    const tdms::group g = file[group];
    if (slash == std::string_view::npos) return add_group(to, g);
    const std::string_view own = name.substr(slash + 1);
    return g.contains(own) && add_channel(to, g, g[own]);
}

bool add_escaped(std::vector<selected_channel>& to, const tdms::file& file, std::string_view name)
{
    for (const tdms::group& g : file.groups()) {
        const std::string group = g.name();
        if (as_argument(group) == name) return add_group(to, g);
        for (const tdms::channel& c : g.channels()) {
            if (as_argument(group + '/' + c.name()) == name) return add_channel(to, g, c);
        }
    }
    return false;
}

}  // namespace

std::string message_of(int status, int reason)
{
    if (status == TDMS_FILE_TAG) return "not a TDMS file";
    if (status == TDMS_FILE_PATH) {
        return "cannot be opened: " + std::generic_category().message(reason);
    }
    std::string text = tdms_status_text(status);
    text.pop_back();  // the sentence's full stop
    return text + " (" + std::to_string(status) + ")";
}

std::string type_name(int type)
{
    switch (type) {
        case TDMS_TYPE_VOID:
            return "none";
#define TDMS_TOOL_NAME(suffix, T, code) \
    case code:                          \
        return #suffix;
            TDMS_ELEMENTS(TDMS_TOOL_NAME)
#undef TDMS_TOOL_NAME
        default:
            return "type " + std::to_string(static_cast<std::uint32_t>(type));
    }
}

int type_of(const tdms::property_value& value)
{
    // In the order of the alternatives.
    constexpr std::array<int, 14> types{
        TDMS_TYPE_VOID,   TDMS_TYPE_INT8,   TDMS_TYPE_INT16,  TDMS_TYPE_INT32,    TDMS_TYPE_INT64,
        TDMS_TYPE_UINT8,  TDMS_TYPE_UINT16, TDMS_TYPE_UINT32, TDMS_TYPE_UINT64,   TDMS_TYPE_FLOAT,
        TDMS_TYPE_DOUBLE, TDMS_TYPE_BOOL,   TDMS_TYPE_STRING, TDMS_TYPE_TIMESTAMP};
    static_assert(types.size() == std::variant_size_v<tdms::property_value>);
    return types.at(value.index());
}

tdms::file open_intact(const input& from)
{
    try {
        return tdms::file::partial(from.path());
    } catch (const tdms::error& e) {
        const int status = e.status();
        if (status == TDMS_FILE_TAG || status == TDMS_FILE_PATH || status == TDMS_MEMORY) throw;
        throw failure(message_of(status) + "; see tdms check, and tdms salvage");
    }
}

bool report_damage(const std::string& name, const input& from, const tdms::file& file)
{
    if (file.rest() == 0) return true;
    const intact_part intact = walk_file(from, [](const segment_facts&) {});
    if (intact.end != file_end::damaged) return true;
    report(name, intact.fault + "; the last " + count_of(file.rest(), "byte") +
                     " are not shown; see tdms salvage");
    return false;
}

bool report_rest(const std::string& name, const input& from, const tdms::file& file,
                 bool must_be_complete)
{
    if (file.rest() == 0) return true;
    if (!report_damage(name, from, file)) return false;
    report(name, "the last " + count_of(file.rest(), "byte") + (file.rest() == 1 ? " is" : " are") +
                     " not a complete segment: being recorded, or cut short; see tdms salvage");
    return !must_be_complete;
}

selected_channel::selected_channel(tdms::group in, tdms::channel one)
    : group(std::move(in)), channel(std::move(one)), type(0), count(0), lost(0)
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
    for (const tdms::group& g : file.groups()) add_group(all, g);
    return all;
}

std::vector<selected_channel> select(const tdms::file& file, const std::vector<std::string>& names)
{
    if (names.empty()) return all_channels(file);
    std::vector<selected_channel> found;
    for (const std::string& name : names) {
        if (add_exact(found, file, name) || add_escaped(found, file, name)) continue;
        const std::string similar = similar_name(file, name);
        throw usage_error("the file has no channel or group " + in_quotes(name) +
                          (similar.empty() ? "; see tdms info --names"
                                           : "; did you mean " + in_quotes(similar) + "?"));
    }
    return found;
}

std::string lost_values(const selected_channel& c)
{
    const std::string lost = count_of(c.lost, "value");
    const bool supported = c.type == TDMS_TYPE_STRING ||
                           tdms_impl::DataSize.at(static_cast<std::uint32_t>(c.type)) != 0;
    return supported ? lost + " lost: stated by the file and not in it"
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
