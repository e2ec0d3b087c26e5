#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <tdms.hpp>

namespace tool {

/// Makes times shown and read in the local time zone from now on, instead of in UTC.
void show_local_times();
bool times_are_local();

/// The name of the zone that a time is shown in: "UTC", or an offset such as "UTC+02:00".
std::string zone_of(tdms::time time);

/// The offset of that zone from UTC in seconds.
long offset_of(tdms::time time);

/// The length of the longest text of a value.
inline constexpr std::size_t longest_value = 64;

inline char* append_text(char* p, std::string_view text)
{
    return p + text.copy(p, longest_value);
}

// append_value(p, value) writes the text of a value at p, and returns its end. REQUIRES: room for
// longest_value bytes. The text of a number is the shortest that yields the same number when read.
template <class T>
char* append_value(char* p, T value)
{
    return std::to_chars(p, p + longest_value, value).ptr;
}

inline char* append_value(char* p, bool value)
{
    return append_text(p, value ? "true" : "false");
}

/// In ISO 8601 format with the offset from UTC, or Z; in microseconds, or in nanoseconds if it is
/// no multiple of a microsecond.
char* append_value(char* p, tdms::time time);

template <class T>
std::string text_of(const T& value)
{
    std::array<char, longest_value> text;
    return {text.begin(), append_value(text.begin(), value)};
}

}  // namespace tool
