// Numbers and times as text, in both directions.
#ifndef EXAMPLES_TEXT_HPP
#define EXAMPLES_TEXT_HPP

#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>

/// Reads a number that is the whole of a text and fits its type. Throws std::invalid_argument.
template <class T>
T to_number(std::string_view text)
{
    T value{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument('"' + std::string(text) + "\" is not a number here");
    }
    return value;
}

/// The shortest text that is this number and no other.
template <class T>
std::string to_text(T number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// A string as one line: with \n for the end of a line, and \\ for a backslash.
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
