#include "listing/tree_json.h"

#include "console/value_text.h"
#include "files/measurement_file.h"
#include "files/selected_channel.h"

namespace tool {
namespace {

void put_json_value(json_writer& to, std::string_view key, const tdms::property_value& value)
{
    const auto put = [&to](const auto& v) {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
            to.put_null();
        } else if constexpr (std::is_same_v<T, tdms::time>) {
            to.put(text_of(v));
        } else {
            to.put(v);
        }
    };
    to.put_key(key);
    std::visit(put, value);
}

void put_json_number(json_writer& to, std::string_view key, std::optional<double> value)
{
    put_json_value(to, key, value ? tdms::property_value(*value) : tdms::property_value());
}

void put_json_properties(json_writer& to, const tdms::object& of)
{
    to.put_key("properties");
    to.open('{');
    for (const auto& [name, value] : of.properties()) {
        to.put_key(name);
        to.open('{');
        to.put("type", type_name(type_of(value)));
        put_json_value(to, "value", value);
        to.close('}');
    }
    to.close('}');
}

void put_json_statistics(json_writer& to, int type, const channel_statistics& s)
{
    to.put_key("statistics");
    if (!s.failure.empty()) return to.put_null();
    to.open('{');
    put_json_value(to, type == TDMS_TYPE_STRING ? "shortest" : "minimum", s.minimum);
    put_json_value(to, type == TDMS_TYPE_STRING ? "longest" : "maximum", s.maximum);
    if (type == TDMS_TYPE_TIMESTAMP) {
        to.put("ascending", s.ascending);
    } else if (type != TDMS_TYPE_STRING) {
        put_json_number(to, "mean", s.mean);
        put_json_number(to, "standard_deviation", s.deviation);
        to.put("nan", s.nan);
    }
    to.close('}');
}

void put_json_statistics(json_writer& to, const group_statistics& s)
{
    if (!s.times) return;
    to.put_key("statistics");
    to.open('{');
    to.put("time_channel", s.times->channel);
    put_json_value(to, "first", s.times->first);
    put_json_value(to, "last", s.times->last);
    to.put("duration", s.times->duration());
    put_json_number(to, "sampling_rate", s.times->rate());
    to.put("largest_step", s.times->largest_step);
    to.close('}');
}

void put_json_statistics(json_writer& to, const file_statistics& s)
{
    to.put_key("statistics");
    to.open('{');
    to.put("bytes", s.size);
    if (s.first) {
        put_json_value(to, "first", *s.first);
        put_json_value(to, "last", *s.last);
        to.put("duration", seconds_between(*s.first, *s.last));
    }
    to.close('}');
}

void put_json_channel(json_writer& to, const tdms::group& g, const tdms::channel& c,
                      const channel_statistics* statistics)
{
    const selected_channel facts(g, c);
    to.next();
    to.open('{');
    to.put("name", c.name());
    to.put("type", type_name(facts.type));
    to.put("values", facts.count);
    to.put("lost", facts.lost);
    if (statistics != nullptr) put_json_statistics(to, facts.type, *statistics);
    put_json_properties(to, c);
    to.close('}');
}

void put_json_group(json_writer& to, const tdms::group& g, const group_statistics* statistics)
{
    to.next();
    to.open('{');
    to.put("name", g.name());
    if (statistics != nullptr) put_json_statistics(to, *statistics);
    put_json_properties(to, g);
    to.put_key("channels");
    to.open('[');
    const std::vector<tdms::channel> channels = g.channels();
    for (std::size_t i = 0; i != channels.size(); ++i) {
        put_json_channel(to, g, channels[i],
                         statistics == nullptr ? nullptr : &statistics->channels[i]);
    }
    to.close(']');
    to.close('}');
}

}  // namespace

void put_json(json_writer& to, const std::string& name, const tdms::file& file,
              const file_statistics* statistics)
{
    to.next();
    to.open('{');
    to.put("file", name);
    if (statistics != nullptr) put_json_statistics(to, *statistics);
    put_json_properties(to, file);
    to.put_key("groups");
    to.open('[');
    const std::vector<tdms::group> groups = file.groups();
    for (std::size_t i = 0; i != groups.size(); ++i) {
        put_json_group(to, groups[i], statistics == nullptr ? nullptr : &statistics->groups[i]);
    }
    to.close(']');
    to.close('}');
}

}  // namespace tool
