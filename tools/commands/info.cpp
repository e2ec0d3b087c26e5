#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "commands/commands.h"
#include "console/json_writer.h"
#include "console/output.h"
#include "console/short_number.h"
#include "console/text.h"
#include "console/value_text.h"
#include "files/measurement_file.h"
#include "files/statistics.h"

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
    const std::string duration = duration_text(times.duration());
    if (!times.ascending) return duration + ", but the times do not ascend";
    const std::optional<double> rate = times.rate();
    return rate ? duration + " at " + short_number(*rate, 7) + " Hz" : duration;
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
        row result{printable(c.channel.name()), {}, text_instead(c, s)};
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
        const auto text = []<class T>(const T& v) {
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

std::vector<selected_channel> channels_of(const tdms::group& g)
{
    std::vector<selected_channel> channels;
    for (const tdms::channel& c : g.channels()) channels.emplace_back(g, c);
    return channels;
}

// The statistics, here and below, are null if they are not wanted.
void put_group(output& out, const tdms::group& g, const group_statistics* statistics)
{
    const std::vector<selected_channel> held = channels_of(g);
    out.put("\n  " + printable(g.name()) + ": " + count_of(held.size(), "channel"));
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

// On a terminal, from which names are copied, they are words for the shell.
void put_names(output& out, const tdms::file& file)
{
    const bool for_terminal = isatty(STDOUT_FILENO) != 0;
    for (const selected_channel& c : all_channels(file)) {
        const std::string name = as_argument(c.name());
        out.put(for_terminal ? for_shell(name) : name);
        out.put('\n');
    }
}

void put_json_value(json_writer& to, std::string_view key, const tdms::property_value& value)
{
    const auto put = [&to]<class T>(const T& v) {
        if constexpr (std::is_same_v<T, std::monostate>)
            to.put_null();
        else if constexpr (std::is_same_v<T, tdms::time>)
            to.put(text_of(v));
        else
            to.put(v);
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

// @return false if there are any
bool report_failures(const std::string& name, const tdms::file& file, const file_statistics& all)
{
    bool all_well = true;
    std::size_t group = 0;
    for (const tdms::group& g : file.groups()) {
        std::size_t channel = 0;
        for (const selected_channel& c : channels_of(g)) {
            const std::string& failure = all.groups[group].channels[channel++].failure;
            if (failure.empty()) continue;
            report(name, in_quotes(c.name()) + ": " + failure);
            all_well = false;
        }
        ++group;
    }
    return all_well;
}

}  // namespace

bool info(const info_options& wanted)
{
    output out;
    json_writer json(out);
    if (wanted.json) json.open('[');
    bool first = true;
    const bool all_well = for_each_file(wanted.files, [&](const std::string& name) {
        const input from(name);
        const tdms::file file = open_intact(from);
        std::optional<file_statistics> read;
        if (wanted.statistics) read = statistics_of(from, file);
        const file_statistics* const statistics = read ? &*read : nullptr;
        if (wanted.json) {
            put_json(json, name, file, statistics);
        } else if (wanted.names) {
            put_names(out, file);
        } else {
            if (!first) out.put('\n');
            first = false;
            put_tree(out, name, file, statistics);
            out.flush();
        }
        const bool all_read = !read || report_failures(name, file, *read);
        return report_rest(name, from, file, wanted.strict) && all_read;
    });
    if (wanted.json) {
        json.close(']');
        out.put('\n');
    }
    out.flush();
    return all_well;
}

}  // namespace tool
