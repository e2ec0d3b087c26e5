#include "listing/tree_text.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "console/short_number.h"
#include "console/text.h"
#include "files/selected_channel.h"
#include "listing/channel_table.h"
#include "listing/shown_value.h"
#include "listing/statistics_table.h"

namespace tool {
namespace {

void put_properties(output& out, const tdms::object& of, std::string_view indent)
{
    std::size_t width = 0;
    for (const auto& [name, value] : of.properties()) {
        width = std::max(width, width_of(shown_name(name)));
    }
    for (const auto& [name, value] : of.properties()) {
        out.put(indent);
        out.put(padded(shown_name(name), std::min<std::size_t>(width, 32)));
        out.put(" = ");
        out.put(shown_value(value));
        out.put('\n');
    }
}

std::string duration_text(double seconds)
{
    if (seconds < 120) return short_number(seconds) + " s";
    const auto milliseconds = static_cast<std::uint64_t>(std::llround(1000 * seconds));
    const std::uint64_t minutes = milliseconds / 60000;
    std::string text;
    if (minutes >= 1440) text.append(std::to_string(minutes / 1440)).append(" d ");
    if (minutes >= 60) text.append(std::to_string(minutes / 60 % 24)).append(" h ");
    text.append(std::to_string(minutes % 60)).append(" min ");
    return text + short_number(static_cast<double>(milliseconds % 60000) / 1000) + " s";
}

std::string times_text(const sample_times& times)
{
    std::string duration = duration_text(times.duration());
    if (!times.ascending) return duration + ", but the times do not ascend";
    const std::optional<double> rate = times.rate();
    if (!rate) return duration;
    std::string text = duration + " at " + short_number(*rate, 7) + " Hz";
    if (times.is_even()) return text;
    return text + " on average, with steps up to " + duration_text(times.largest_step);
}

void put_group(output& out, const tdms::group& g, const group_statistics* statistics)
{
    const std::vector<selected_channel> held = channels_of(g);
    out.put("\n  " + shown_name(g.name()) + ": " + number_of(held.size(), "channel"));
    if (statistics != nullptr && statistics->times) {
        out.put(", ");
        out.put(times_text(*statistics->times));
    }
    out.put('\n');
    put_properties(out, g, "    ");
    if (held.empty()) return;
    put_channel_table(out, held);
    if (statistics == nullptr) return;
    out.put('\n');
    put_statistics_table(out, held, statistics->channels);
}

}  // namespace

void put_tree(output& out, const std::string& name, const tdms::file& file,
              const file_statistics* statistics)
{
    const std::vector<tdms::group> groups = file.groups();
    std::uint64_t channels = 0;
    for (const tdms::group& g : groups) channels += g.channels().size();
    out.put(printable(name) + ": " + number_of(groups.size(), "group") + ", " +
            number_of(channels, "channel"));
    if (statistics != nullptr) {
        out.put(", " + number_of(statistics->size, "byte"));
        if (statistics->first) {
            out.put("\n  " + span_text(*statistics->first, *statistics->last) + ", " +
                    duration_text(seconds_between(*statistics->first, *statistics->last)));
        }
    }
    out.put('\n');
    put_properties(out, file, "  ");
    for (std::size_t i = 0; i != groups.size(); ++i) {
        put_group(out, groups[i], statistics == nullptr ? nullptr : &statistics->groups[i]);
    }
}

}  // namespace tool
