#include <unistd.h>

#include <algorithm>

#include "commands/commands.h"
#include "console/json_writer.h"
#include "console/output.h"
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

void put_properties(output& out, const tdms::object& of, std::string_view indent)
{
    std::size_t width = 0;
    for (const auto& [name, value] : of.properties()) {
        width = std::max(width, width_of(printable(name)));
    }
    for (const auto& [name, value] : of.properties()) {
        out.put(indent);
        out.put(padded(printable(name), std::min<std::size_t>(width, 32)));
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
            name_ = std::max(name_, width_of(printable(c.channel.name())));
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
            properties.push_back(printable(name) + " = " + shown(value));
        }
        put_line(printable(c.channel.name()), type_name(c.type), std::to_string(c.count),
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

std::vector<selected_channel> channels_of(const tdms::group& g)
{
    std::vector<selected_channel> channels;
    for (const tdms::channel& c : g.channels()) channels.emplace_back(g, c);
    return channels;
}

void put_tree(output& out, const std::string& name, const tdms::file& file)
{
    const std::vector<tdms::group> groups = file.groups();
    std::uint64_t channels = 0;
    for (const tdms::group& g : groups) channels += g.channels().size();
    out.put(printable(name) + ": " + count_of(groups.size(), "group") + ", " +
            count_of(channels, "channel") + '\n');
    put_properties(out, file, "  ");
    for (const tdms::group& g : groups) {
        const std::vector<selected_channel> held = channels_of(g);
        out.put("\n  " + printable(g.name()) + ": " + count_of(held.size(), "channel") + '\n');
        put_properties(out, g, "    ");
        if (!held.empty()) channel_table(out, held);
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

void put_json_properties(json_writer& to, const tdms::object& of)
{
    to.put_key("properties");
    to.open('{');
    for (const auto& [name, value] : of.properties()) {
        const auto put = [&to]<class T>(const T& v) {
            to.put_key("value");
            if constexpr (std::is_same_v<T, std::monostate>)
                to.put_null();
            else if constexpr (std::is_same_v<T, tdms::time>)
                to.put(text_of(v));
            else
                to.put(v);
        };
        to.put_key(name);
        to.open('{');
        to.put("type", type_name(type_of(value)));
        std::visit(put, value);
        to.close('}');
    }
    to.close('}');
}

void put_json_channel(json_writer& to, const tdms::group& g, const tdms::channel& c)
{
    const selected_channel facts(g, c);
    to.next();
    to.open('{');
    to.put("name", c.name());
    to.put("type", type_name(facts.type));
    to.put("values", facts.count);
    to.put("lost", facts.lost);
    put_json_properties(to, c);
    to.close('}');
}

void put_json(json_writer& to, const std::string& name, const tdms::file& file)
{
    to.next();
    to.open('{');
    to.put("file", name);
    put_json_properties(to, file);
    to.put_key("groups");
    to.open('[');
    for (const tdms::group& g : file.groups()) {
        to.next();
        to.open('{');
        to.put("name", g.name());
        put_json_properties(to, g);
        to.put_key("channels");
        to.open('[');
        for (const tdms::channel& c : g.channels()) put_json_channel(to, g, c);
        to.close(']');
        to.close('}');
    }
    to.close(']');
    to.close('}');
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
        if (wanted.json) {
            put_json(json, name, file);
        } else if (wanted.names) {
            put_names(out, file);
        } else {
            if (!first) out.put('\n');
            first = false;
            put_tree(out, name, file);
            out.flush();
        }
        return report_rest(name, from, file, wanted.strict);
    });
    if (wanted.json) {
        json.close(']');
        out.put('\n');
    }
    out.flush();
    return all_well;
}

}  // namespace tool
