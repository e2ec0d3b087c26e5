#include "console/value_text.h"

#include <chrono>
#include <cstdlib>
#include <ctime>

namespace tool {
namespace {

namespace chrono = std::chrono;

bool local_times = false;

// Appends a number that is not negative, with leading zeros up to `digits` digits.
char* append_digits(char* p, std::int64_t value, int digits)
{
    std::array<char, 24> text;
    const char* const end = std::to_chars(text.begin(), text.end(), value).ptr;
    for (auto missing = digits - (end - text.begin()); missing > 0; --missing) *p++ = '0';
    return append_text(p, {text.begin(), static_cast<std::size_t>(end - text.begin())});
}

// Such as +02:00; with seconds for local mean times, as they were used once.
char* append_offset(char* p, long offset)
{
    const long seconds = std::abs(offset);
    p = append_digits(append_text(p, offset < 0 ? "-" : "+"), seconds / 3600, 2);
    p = append_digits(append_text(p, ":"), seconds / 60 % 60, 2);
    return seconds % 60 == 0 ? p : append_digits(append_text(p, ":"), seconds % 60, 2);
}

}  // namespace

void show_local_times()
{
    local_times = true;
}

bool times_are_local()
{
    return local_times;
}

long offset_of(tdms::time time)
{
    if (!local_times) return 0;
    const std::time_t seconds = chrono::floor<chrono::seconds>(time).time_since_epoch().count();
    std::tm fields{};
    localtime_r(&seconds, &fields);
    return fields.tm_gmtoff;
}

std::string zone_of(tdms::time time)
{
    if (!local_times) return "UTC";
    std::array<char, longest_value> text;
    return {text.begin(), append_offset(append_text(text.begin(), "UTC"), offset_of(time))};
}

char* append_value(char* p, tdms::time time)
{
    const long offset = offset_of(time);
    const auto seconds = chrono::floor<chrono::seconds>(time);
    const auto shown = seconds + chrono::seconds(offset);
    const auto day = chrono::floor<chrono::days>(shown);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(shown - day);
    p = append_digits(p, int{date.year()}, 4);
    p = append_digits(append_text(p, "-"), unsigned{date.month()}, 2);
    p = append_digits(append_text(p, "-"), unsigned{date.day()}, 2);
    p = append_digits(append_text(p, "T"), clock.hours().count(), 2);
    p = append_digits(append_text(p, ":"), clock.minutes().count(), 2);
    p = append_digits(append_text(p, ":"), clock.seconds().count(), 2);
    p = append_text(p, ".");
    // Not by subtracting `seconds`, which 64 bits of nanoseconds cannot count for the earliest
    // times.
    const auto rest = time.time_since_epoch().count() % 1000000000;
    const auto nanosecond = rest < 0 ? rest + 1000000000 : rest;
    p = nanosecond % 1000 == 0 ? append_digits(p, nanosecond / 1000, 6)
                               : append_digits(p, nanosecond, 9);
    return local_times ? append_offset(p, offset) : append_text(p, "Z");
}

}  // namespace tool
