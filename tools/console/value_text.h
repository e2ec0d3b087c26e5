#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <tdms.hpp>

namespace tool {

/// From now on times are shown, and read, in the local time zone; before, in UTC.
void show_local_times();
bool times_are_local();

/// The zone that times are shown in, at one of them: "UTC", or an offset such as "UTC+02:00".
std::string zone_of(tdms::time time);

/// The offset of that zone from UTC in seconds.
long offset_of(tdms::time time);

/// No value's text is longer.
inline constexpr std::size_t longest_value = 64;

inline char* append_text(char* p, std::string_view text)
{
    return p + text.copy(p, longest_value);
}

// append_value(p, value) puts a value's text at p and returns its end. REQUIRES: longest_value
// bytes of room. A number is as short as it can be and still be the same when it is read back.
template <class T>
char* append_value(char* p, T value)
{
    return std::to_chars(p, p + longest_value, value).ptr;
}

inline char* append_value(char* p, bool value)
{
    return append_text(p, value ? "true" : "false");
}

/// In ISO 8601 format with the offset from UTC, or Z; to the microsecond, or to the nanosecond if
/// that is not whole.
char* append_value(char* p, tdms::time time);

template <class T>
std::string text_of(const T& value)
{
    std::array<char, longest_value> text;
    return {text.begin(), append_value(text.begin(), value)};
}

}  // namespace tool
