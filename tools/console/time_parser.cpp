#include "console/time_parser.h"

#include <charconv>
#include <chrono>
#include <ctime>
#include <optional>
#include <string_view>

#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"

namespace tool {
namespace {

namespace chrono = std::chrono;

// Takes a text apart, from its beginning.
class text_cursor {
  public:
    explicit text_cursor(std::string_view text) : rest_(text) {}

    bool take(char c)
    {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    // A number of exactly that many digits.
    bool take(int& number, std::size_t digits)
    {
        const std::string_view text = rest_.substr(0, digits);
        if (text.size() != digits || !is_number(text)) return false;
        std::from_chars(text.data(), text.data() + text.size(), number);
        rest_.remove_prefix(digits);
        return true;
    }

    // The digits after a decimal point. Those after the ninth are ignored.
    bool take_fraction(std::int64_t& nanoseconds)
    {
        std::int64_t unit = 100000000;
        const std::size_t before = rest_.size();
        for (; !rest_.empty() && is_number(rest_.substr(0, 1)); rest_.remove_prefix(1)) {
            nanoseconds += unit * (rest_[0] - '0');
            unit /= 10;
        }
        return rest_.size() != before;
    }

    bool at_end() const { return rest_.empty(); }

  private:
    static bool is_number(std::string_view text)
    {
        return text.find_first_not_of("0123456789") == std::string_view::npos;
    }

    std::string_view rest_;
};

// A time as a clock shows it.
struct clock_time {
    chrono::sys_seconds seconds;
    std::int64_t nanoseconds = 0;
};

// Takes YYYY-MM-DD.
std::optional<chrono::sys_days> take_date(text_cursor& from)
{
    int year = 0;
    int month = 0;
    int day = 0;
    if (!from.take(year, 4) || !from.take('-') || !from.take(month, 2) || !from.take('-') ||
        !from.take(day, 2)) {
        return std::nullopt;
    }
    const chrono::year_month_day date{chrono::year(year), chrono::month(unsigned(month)),
                                      chrono::day(unsigned(day))};
    // Years all of whose nanoseconds fit in 64 bits.
    if (!date.ok() || year < 1678 || year > 2261) return std::nullopt;
    return chrono::sys_days(date);
}

// Takes a date, then perhaps T or a blank and HH:MM, HH:MM:SS or HH:MM:SS.FRACTION.
std::optional<clock_time> take_clock_time(text_cursor& from)
{
    const std::optional<chrono::sys_days> date = take_date(from);
    if (!date) return std::nullopt;
    clock_time time{*date};
    if (!from.take('T') && !from.take(' ')) return time;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!from.take(hour, 2) || !from.take(':') || !from.take(minute, 2)) return std::nullopt;
    if (from.take(':') && !from.take(second, 2)) return std::nullopt;
    if ((from.take('.') || from.take(',')) && !from.take_fraction(time.nanoseconds)) {
        return std::nullopt;
    }
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    time.seconds += chrono::hours(hour) + chrono::minutes(minute) + chrono::seconds(second);
    return time;
}

// The offset of the local time zone from UTC when a clock in it shows this time.
chrono::seconds local_offset(chrono::sys_seconds shown)
{
    const auto day = chrono::floor<chrono::days>(shown);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(shown - day);
    std::tm fields{};
    fields.tm_year = int{date.year()} - 1900;
    fields.tm_mon = static_cast<int>(unsigned{date.month()}) - 1;
    fields.tm_mday = static_cast<int>(unsigned{date.day()});
    fields.tm_hour = static_cast<int>(clock.hours().count());
    fields.tm_min = static_cast<int>(clock.minutes().count());
    fields.tm_sec = static_cast<int>(clock.seconds().count());
    fields.tm_isdst = -1;
    return shown.time_since_epoch() - chrono::seconds(std::mktime(&fields));
}

// Takes Z, +HH, +HH:MM or +HHMM, or the same with a minus; without any of them the offset is that
// of the zone that times are shown in.
std::optional<chrono::seconds> take_offset(text_cursor& from, chrono::sys_seconds shown)
{
    const bool is_west = from.take('-');
    if (!is_west && !from.take('+')) {
        return from.take('Z') || !times_are_local() ? chrono::seconds(0) : local_offset(shown);
    }
    int hour = 0;
    int minute = 0;
    if (!from.take(hour, 2)) return std::nullopt;
    from.take(':');
    if (!from.at_end() && !from.take(minute, 2)) return std::nullopt;
    if (hour > 23 || minute > 59) return std::nullopt;
    const chrono::seconds offset = chrono::hours(hour) + chrono::minutes(minute);
    return is_west ? -offset : offset;
}

std::optional<tdms::time> parsed(std::string_view text)
{
    text_cursor from(text);
    const std::optional<clock_time> shown = take_clock_time(from);
    if (!shown) return std::nullopt;
    const std::optional<chrono::seconds> offset = take_offset(from, shown->seconds);
    if (!offset || !from.at_end()) return std::nullopt;
    return shown->seconds - *offset + chrono::nanoseconds(shown->nanoseconds);
}

}  // namespace

tdms::time time_from(const std::string& text)
{
    if (const std::optional<tdms::time> time = parsed(text)) return *time;
    throw usage_error("not a time: " + in_quotes(text) +
                      "; a time is such as 2026-05-04T10:00:00Z, or 2026-05-04");
}

}  // namespace tool
