#include "listing/channel_table.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "console/text.h"
#include "files/measurement_file.h"
#include "listing/shown_value.h"

namespace tool {
namespace {

// The properties of a channel are put on as few lines as possible. What does not fit in its column
// is not shortened, and does not widen the column.
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
            properties.push_back(shown_name(name) + " = " + shown_value(value));
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

}  // namespace

void put_channel_table(output& out, const std::vector<selected_channel>& channels)
{
    channel_table(out, channels);
}

}  // namespace tool
