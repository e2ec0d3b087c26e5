// edit: adds a property and values to a channel of an existing file.
//
//     edit FILE GROUP CHANNEL NAME=TEXT [VALUE...]
//
// The property is a double if TEXT is a number, otherwise a string; it replaces a property of that
// name. Values are converted to the channel's type; times are given in nanoseconds since
// 1970-01-01T00:00:00Z. A missing group or channel is created, a channel with doubles. If saving
// fails, nothing is added; if syncing fails after that, the error is reported but everything is in
// the file.
#include <chrono>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <tdms.hpp>
#include <type_traits>
#include <vector>

#include "support/conversions.hpp"
#include "support/exit_status.hpp"

namespace {

using words = std::span<const char* const>;

template <class T>
T to_value(const std::string& word)
{
    if constexpr (std::is_same_v<T, std::string>) {
        return word;
    } else if constexpr (std::is_same_v<T, bool>) {
        return to_number<int>(word) != 0;
    } else if constexpr (std::is_same_v<T, tdms::time>) {
        return tdms::time(std::chrono::nanoseconds(to_number<std::int64_t>(word)));
    } else {
        return to_number<T>(word);
    }
}

template <class T>
void append(tdms::channel& c, words values)
{
    std::vector<T> converted;
    for (const char* const value : values) converted.push_back(to_value<T>(value));
    c.append(converted);
}

tdms::property_value to_property(const std::string& text)
{
    try {
        return to_number<double>(text);
    } catch (const std::invalid_argument&) {
        return text;
    }
}

void edit(const char* path, const char* group, const char* channel, const std::string& assignment,
          words values)
{
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos) throw std::invalid_argument(assignment + ": not NAME=TEXT");
    tdms::file f(path, "a");
    tdms::group g = f.contains(group) ? f[group] : f.add_group(group);
    tdms::channel c = g.contains(channel) ? g[channel] : g.add_channel(channel);
    c.property(assignment.substr(0, equals), to_property(assignment.substr(equals + 1)));
    // A channel gets its type with its first values.
    const int type = c.type() == TDMS_TYPE_VOID ? TDMS_TYPE_DOUBLE : c.type();
    const bool known = tdms::with_type(type, [&]<class T>() { append<T>(c, values); });
    if (!known) throw std::runtime_error(f.path() + ": the channel's type has no values");
    f.save();
    f.sync();
    f.close();
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("edit", [&] {
        if (argc < 5) {
            throw std::invalid_argument("usage: edit FILE GROUP CHANNEL NAME=TEXT [VALUE...]");
        }
        edit(argv[1], argv[2], argv[3], argv[4], words(argv + 5, argv + argc));
    });
}
