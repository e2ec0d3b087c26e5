#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

namespace tool {

/// A time as the library counts them: since 1970-01-01T00:00:00 UTC.
struct nanoseconds {
    std::int64_t count;
};

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

struct local_time {
    std::tm fields;
    std::int32_t nanosecond;
};

inline local_time local_time_of(nanoseconds time)
{
    constexpr std::int64_t per_second = 1000000000;
    const auto rest = static_cast<std::int32_t>(time.count % per_second);
    const std::time_t seconds = time.count / per_second - (rest < 0 ? 1 : 0);
    local_time local{{}, rest + (rest < 0 ? std::int32_t{per_second} : 0)};
    localtime_r(&seconds, &local.fields);
    return local;
}

/// An offset from UTC as ISO 8601 has it, such as +02:00; with seconds where a place had its own
/// mean time.
inline char* append_offset(char* p, const local_time& t)
{
    const auto seconds = static_cast<std::int32_t>(std::abs(t.fields.tm_gmtoff));
    p = append_digits(append_text(p, t.fields.tm_gmtoff < 0 ? "-" : "+"), seconds / 3600, 2);
    p = append_digits(append_text(p, ":"), seconds / 60 % 60, 2);
    return seconds % 60 == 0 ? p : append_digits(append_text(p, ":"), seconds % 60, 2);
}

/// A local time in ISO 8601 format, to the microsecond, or to the nanosecond if that is not whole.
inline char* append_value(char* p, nanoseconds time)
{
    const local_time t = local_time_of(time);
    p = append_digits(p, t.fields.tm_year + 1900, 4);
    p = append_digits(append_text(p, "-"), t.fields.tm_mon + 1, 2);
    p = append_digits(append_text(p, "-"), t.fields.tm_mday, 2);
    p = append_digits(append_text(p, "T"), t.fields.tm_hour, 2);
    p = append_digits(append_text(p, ":"), t.fields.tm_min, 2);
    p = append_digits(append_text(p, ":"), t.fields.tm_sec, 2);
    p = append_text(p, ".");
    p = t.nanosecond % 1000 == 0 ? append_digits(p, t.nanosecond / 1000, 6)
                                 : append_digits(p, t.nanosecond, 9);
    return append_offset(p, t);
}

inline std::string offset_text(nanoseconds time)
{
    std::array<char, longest_value> text;
    return {text.begin(), append_offset(text.begin(), local_time_of(time))};
}

template <class T>
std::string text_of(const T& value)
{
    std::array<char, longest_value> text;
    return {text.begin(), append_value(text.begin(), value)};
}

}  // namespace tool
