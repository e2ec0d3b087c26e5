#include "listing/tree_text.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "console/short_number.h"
#include "console/text.h"
#include "console/value_text.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

// What a value is shown as: strings in quotes, and of a type without values its name.
std::string shown(const tdms::property_value& value)
{
    const auto text = [](const auto& v) -> std::string {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::monostate>)
            return "(no value)";
        else if constexpr (std::is_same_v<T, std::string>)
            return in_quotes(v);
        else
            return text_of(v);
    };
    return std::visit(text, value);
}

// A name in a table, where an empty one would be nothing.
std::string shown_name(const std::string& name)
{
    return name.empty() ? in_quotes(name) : printable(name);
}

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
        out.put(shown(value));
        out.put('\n');
    }
}

// A table of channels. The properties of each follow one another, on as few lines as they
// take; what is longer than a column sticks out of it and moves nothing else.
class channel_table {
  public:
    channel_table(output& out, const std::vector<selected_channel>& channels) : out_(out)
    {
        for (const selected_channel& c : channels) {
            name_ = std::max(name_, width_of(shown_name(c.channel.name())));
            type_ = std::max(type_, type_name(c.type).size());
            count_ = std::max(count_, std::to_string(c.count).size());
        }
        name_ = std::min<std::size_t>(name_, 40);
        put_line("channel", "type", "values", {"properties"});
        for (const selected_channel& c : channels) put(c);
    }

  private:
    void put(const selected_channel& c)
    {
        std::vector<std::string> properties;
        if (c.lost != 0) properties.push_back(with_commas(c.lost) + " lost");
        for (const auto& [name, value] : c.channel.properties()) {
            properties.push_back(shown_name(name) + " = " + shown(value));
        }
        put_line(shown_name(c.channel.name()), type_name(c.type), std::to_string(c.count),
                 properties);
    }

    void put_line(const std::string& name, const std::string& type, const std::string& count,
                  const std::vector<std::string>& properties)
    {
        const std::string blanks(count_ - std::min(count_, count.size()), ' ');
        std::string line =
            "    " + padded(name, name_) + "  " + padded(type, type_) + "  " + blanks + count;
        const std::size_t column = 4 + name_ + 2 + type_ + 2 + count_ + 2;
        const char* separator = "  ";
        for (const std::string& each : properties) {
            const bool fits = width_of(line) + 2 + width_of(each) < columns_;
            if (!fits && *separator == ',') {
                out_.put(line);
                out_.put(",\n");
                line = std::string(column, ' ') + each;
            } else {
                line += separator + each;
            }
            separator = ", ";
        }
        out_.put(line);
        out_.put('\n');
    }

    output& out_;
    std::size_t columns_ = size_of_terminal(STDOUT_FILENO, {100, 0}).columns;
    std::size_t name_ = 7;
    std::size_t type_ = 4;
    std::size_t count_ = 6;
};

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

std::string span_text(tdms::time first, tdms::time last)
{
    return text_of(first) + " to " + text_of(last);
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

// A table of what the values of channels are like. Of those that are no numbers there is a text.
class statistics_table {
  public:
    statistics_table(output& out, const std::vector<selected_channel>& channels,
                     const std::vector<channel_statistics>& statistics)
        : out_(out)
    {
        rows_.push_back({"channel", {"minimum", "maximum", "mean", "std dev", "NaN", "lost"}, ""});
        for (std::size_t i = 0; i != channels.size(); ++i) {
            rows_.push_back(row_of(channels[i], statistics[i]));
        }
        measure();
        for (const row& each : rows_) put(each);
    }

  private:
    static constexpr std::size_t columns = 6;
    static constexpr std::size_t narrowest_name = 16;

    struct row {
        std::string name;
        std::array<std::string, columns> cells;
        std::string text;  // in their place
    };

    static row row_of(const selected_channel& c, const channel_statistics& s)
    {
        row result{shown_name(c.channel.name()), {}, text_instead(c, s)};
        if (!result.text.empty()) return result;
        result.cells = {extreme_text(s.minimum),  extreme_text(s.maximum), number_text(s.mean),
                        number_text(s.deviation), std::to_string(s.nan),   std::to_string(c.lost)};
        return result;
    }

    static std::string text_instead(const selected_channel& c, const channel_statistics& s)
    {
        if (!s.failure.empty()) return "cannot be read";
        std::string text;
        if (c.count == 0) {
            text = "no values";
        } else if (c.type == TDMS_TYPE_TIMESTAMP) {
            text = span_text(std::get<tdms::time>(s.minimum), std::get<tdms::time>(s.maximum));
            if (!s.ascending) text.append(", not ascending");
        } else if (c.type == TDMS_TYPE_STRING) {
            if (s.minimum != s.maximum) text.append(shown(s.minimum)).append(" to ");
            text.append(count_of(std::get<std::uint64_t>(s.maximum), "byte"));
        } else {
            return {};
        }
        return c.lost == 0 ? text : text + "; " + with_commas(c.lost) + " lost";
    }

    // Exact if that is short, as it always is for an integer.
    static std::string extreme_text(const tdms::property_value& value)
    {
        constexpr std::size_t longest = 14;
        const auto text = [](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            std::string exact = shown(v);
            if constexpr (std::is_floating_point_v<T>) {
                if (exact.size() > longest) return short_number(double{v}, 9);
            }
            return exact;
        };
        return std::holds_alternative<std::monostate>(value) ? "-" : std::visit(text, value);
    }

    static std::string number_text(std::optional<double> value)
    {
        return value ? short_number(*value) : "-";
    }

    void measure()
    {
        std::size_t others = 4;
        for (std::size_t i = 0; i != columns; ++i) {
            for (const row& each : rows_) widths_[i] = std::max(widths_[i], each.cells[i].size());
            others += 2 + widths_[i];
        }
        for (const row& each : rows_) others = std::max(others, 6 + each.text.size());
        const std::size_t left = size_of_terminal(STDOUT_FILENO, {100, 0}).columns;
        const std::size_t widest = std::max(narrowest_name, left - std::min(left, others));
        for (const row& each : rows_) name_ = std::max(name_, width_of(each.name));
        name_ = std::min(name_, widest);
    }

    void put(const row& each)
    {
        std::string line = "    " + padded(shortened(each.name, name_), name_);
        if (!each.text.empty()) {
            line.append("  ").append(each.text);
        } else {
            for (std::size_t i = 0; i != columns; ++i) {
                line.append(2 + widths_[i] - each.cells[i].size(), ' ').append(each.cells[i]);
            }
        }
        out_.put(line);
        out_.put('\n');
    }

    output& out_;
    std::vector<row> rows_;
    std::array<std::size_t, columns> widths_{};
    std::size_t name_ = 0;
};

void put_group(output& out, const tdms::group& g, const group_statistics* statistics)
{
    const std::vector<selected_channel> held = channels_of(g);
    out.put("\n  " + shown_name(g.name()) + ": " + count_of(held.size(), "channel"));
    if (statistics != nullptr && statistics->times) {
        out.put(", ");
        out.put(times_text(*statistics->times));
    }
    out.put('\n');
    put_properties(out, g, "    ");
    if (held.empty()) return;
    channel_table(out, held);
    if (statistics == nullptr) return;
    out.put('\n');
    statistics_table(out, held, statistics->channels);
}

}  // namespace

void put_tree(output& out, const std::string& name, const tdms::file& file,
              const file_statistics* statistics)
{
    const std::vector<tdms::group> groups = file.groups();
    std::uint64_t channels = 0;
    for (const tdms::group& g : groups) channels += g.channels().size();
    out.put(printable(name) + ": " + count_of(groups.size(), "group") + ", " +
            count_of(channels, "channel"));
    if (statistics != nullptr) {
        out.put(", " + count_of(statistics->size, "byte"));
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
