// Converts numbers to text and back, and strings and times to text.
#ifndef EXAMPLES_CONVERSIONS_HPP
#define EXAMPLES_CONVERSIONS_HPP

#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>

/// The number that a text consists of. Throws std::invalid_argument if it is none of type T.
template <class T>
T to_number(std::string_view text)
{
    T value{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument('"' + std::string(text) +
                                    "\" is not a number of the right type");
    }
    return value;
}

/// The shortest text that yields the same number when read.
template <class T>
std::string to_text(T number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// A string as one line: ends of lines become \n, backslashes become \\.
inline std::string to_text(const std::string& string)
{
    std::string text;
    for (const char c : string) {
        if (c == '\n') {
            text += "\\n";
        } else {
            text.append(c == '\\' ? 2 : 1, c);
        }
    }
    return text;
}

using moment = std::chrono::sys_time<std::chrono::nanoseconds>;

/// Such as 2024-10-27T01:30:00.100000000Z.
inline std::string to_text(moment time)
{
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t seconds = second.time_since_epoch().count();
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%09dZ", fields.tm_year + 1900,
                  fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec,
                  static_cast<int>((time - second).count()));
    return text;
}

#endif
