#include <unistd.h>

#include <algorithm>

#include "commands.h"
#include "json_writer.h"
#include "measurement_file.h"
#include "value_text.h"

namespace tool {
namespace {

std::string shown(const property& p)
{
    const auto text = [&p](const auto& value) -> std::string {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::monostate>)
            return '(' + type_name(p.type) + ')';
        else if constexpr (std::is_same_v<T, std::string>)
            return in_quotes(value);
        else
            return text_of(value);
    };
    return std::visit(text, p.value);
}

void put_properties(output& out, const property_list& list, std::string_view indent)
{
    std::size_t width = 0;
    for (const property& p : list) width = std::max(width, width_of(printable(p.name)));
    for (const property& p : list) {
        out.put(indent);
        out.put(padded(printable(p.name), std::min<std::size_t>(width, 32)));
        out.put(" = ");
        out.put(shown(p));
        out.put('\n');
    }
}

// A table of channels. The properties of each follow one another, on as few lines as they
// take; what is longer than a column sticks out of it and moves nothing else.
class channel_table {
  public:
    channel_table(output& out, const std::vector<channel>& channels) : out_(out)
    {
        for (const channel& c : channels) {
            name_ = std::max(name_, width_of(printable(c.own_name())));
            type_ = std::max(type_, type_name(c.type).size());
            count_ = std::max(count_, std::to_string(c.count).size());
        }
        name_ = std::min<std::size_t>(name_, 40);
        put_line("channel", "type", "values", {"properties"});
        for (const channel& c : channels) put(c);
    }

  private:
    void put(const channel& c)
    {
        std::vector<std::string> properties;
        for (const property& p : c.properties) {
            properties.push_back(printable(p.name) + " = " + shown(p));
        }
        put_line(printable(c.own_name()), type_name(c.type), std::to_string(c.count), properties);
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

std::uint64_t channel_count(const measurement_file& file)
{
    std::uint64_t count = 0;
    for (const group& g : file.groups) count += g.channels.size();
    return count;
}

void put_tree(output& out, const std::string& name, const measurement_file& file)
{
    out.put(printable(name) + ": " + count_of(file.groups.size(), "group") + ", " +
            count_of(channel_count(file), "channel") + '\n');
    put_properties(out, file.properties, "  ");
    for (const group& g : file.groups) {
        out.put("\n  " + printable(g.name) + ": " + count_of(g.channels.size(), "channel") + '\n');
        put_properties(out, g.properties, "    ");
        if (!g.channels.empty()) channel_table(out, g.channels);
    }
}

void put_json(json_writer& to, const property_list& list)
{
    to.put_key("properties");
    to.open('{');
    for (const property& p : list) {
        const auto value = [](const auto& v) -> nlohmann::json {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, std::monostate>)
                return nullptr;
            else if constexpr (std::is_same_v<T, nanoseconds>)
                return text_of(v);
            else
                return v;
        };
        to.put_key(p.name);
        to.open('{');
        to.put("type", type_name(p.type));
        to.put("value", std::visit(value, p.value));
        to.close('}');
    }
    to.close('}');
}

void put_json(json_writer& to, const channel& c)
{
    to.next();
    to.open('{');
    to.put("name", c.own_name());
    to.put("type", type_name(c.type));
    to.put("values", c.count);
    put_json(to, c.properties);
    to.close('}');
}

void put_json(json_writer& to, const std::string& name, const measurement_file& file)
{
    to.next();
    to.open('{');
    to.put("file", name);
    put_json(to, file.properties);
    to.put_key("groups");
    to.open('[');
    for (const group& g : file.groups) {
        to.next();
        to.open('{');
        to.put("name", g.name);
        put_json(to, g.properties);
        to.put_key("channels");
        to.open('[');
        for (const channel& c : g.channels) put_json(to, c);
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
        const measurement_file file(from);
        if (wanted.json) {
            put_json(json, name, file);
            return true;
        }
        if (wanted.names) {
            for (const group& g : file.groups) {
                for (const channel& c : g.channels) out.put(printable(c.name) + '\n');
            }
            return true;
        }
        if (!first) out.put('\n');
        first = false;
        put_tree(out, name, file);
        out.flush();
        return true;
    });
    if (wanted.json) {
        json.close(']');
        out.put('\n');
    }
    out.flush();
    return all_well;
}

}  // namespace tool
