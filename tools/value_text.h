#pragma once

#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include "tdms.h"

namespace tool {

/// No value's text is longer.
inline constexpr std::size_t longest_value = 64;

// append_value(p, value) puts a value's text at p and returns its end. REQUIRES: longest_value
// bytes of room. A number is as short as it can be and still be the same when it is read back.
template <class T>
char* append_value(char* p, T value)
{
    return std::to_chars(p, p + longest_value, value).ptr;
}

inline char* append_text(char* p, std::string_view text)
{
    return p + text.copy(p, longest_value);
}

inline char* append_value(char* p, bool value)
{
    return append_text(p, value ? "true" : "false");
}

/// At least `digits` digits of a number that is not negative.
inline char* append_digits(char* p, std::int32_t value, int digits)
{
    std::array<char, 16> text;
    const char* const end = std::to_chars(text.begin(), text.end(), value).ptr;
    for (auto missing = digits - (end - text.begin()); missing > 0; --missing) *p++ = '0';
    return append_text(p, {text.begin(), static_cast<std::size_t>(end - text.begin())});
}

/// A local time by ISO 8601, to the microsecond.
inline char* append_value(char* p, const timestamp_fields& t)
{
    p = append_digits(p, t.year, 4);
    p = append_digits(append_text(p, "-"), t.month, 2);
    p = append_digits(append_text(p, "-"), t.day, 2);
    p = append_digits(append_text(p, "T"), t.hour, 2);
    p = append_digits(append_text(p, ":"), t.minute, 2);
    p = append_digits(append_text(p, ":"), t.second, 2);
    return append_digits(append_text(p, "."), t.microsecond, 6);
}

template <class T>
std::string text_of(const T& value)
{
    std::array<char, longest_value> text;
    return {text.begin(), append_value(text.begin(), value)};
}

}  // namespace tool
