#include <algorithm>
#include <chrono>
#include <cstdint>

#include "console/value_text.h"
#include "plotting/axis.h"

namespace tool {
namespace {

namespace chrono = std::chrono;

constexpr std::size_t between_labels = 3;  // characters

// The distance between two ticks, in months or, if these are 0, in nanoseconds. The nanoseconds of
// a month are about its length.
struct time_step {
    int months;
    std::int64_t nanoseconds;
};

constexpr std::int64_t second = 1000000000;
constexpr std::int64_t day = 86400 * second;

std::vector<time_step> time_steps()
{
    std::vector<time_step> steps;
    for (std::int64_t power = 1; power != second; power *= 10) {
        for (const std::int64_t factor : {1, 2, 5}) steps.push_back({0, factor * power});
    }
    for (const std::int64_t unit : {1, 60}) {
        for (const std::int64_t factor : {1, 2, 5, 10, 15, 30})
            steps.push_back({0, factor * unit * second});
    }
    for (const std::int64_t hours : {1, 2, 3, 6, 12, 24, 48, 168, 336}) {
        steps.push_back({0, hours * 3600 * second});
    }
    for (const int months : {1, 2, 3, 6, 12, 24, 60, 120, 240, 600, 1200}) {
        steps.push_back({months, std::int64_t{30} * months * day});
    }
    return steps;
}

// A moment as a clock in the shown time zone has it.
struct shown_time {
    chrono::sys_seconds seconds;
    std::int64_t nanoseconds;  // after the second

    chrono::sys_days date() const { return chrono::floor<chrono::days>(seconds); }
    bool is_midnight() const { return seconds == date() && nanoseconds == 0; }
};

shown_time shown(tdms::time time, long offset)
{
    const auto whole = chrono::floor<chrono::seconds>(time);
    const std::int64_t rest = time.time_since_epoch().count() % second;
    return {whole + chrono::seconds(offset), rest < 0 ? rest + second : rest};
}

double seconds_between(const shown_time& one, const shown_time& other)
{
    return static_cast<double>((other.seconds - one.seconds).count()) +
           1e-9 * static_cast<double>(other.nanoseconds - one.nanoseconds);
}

// A time plus some seconds, or the first or last time that 64 bits of nanoseconds can count.
tdms::time later_by(tdms::time time, double seconds)
{
    const double sum = static_cast<double>(time.time_since_epoch().count()) + 1e9 * seconds;
    if (sum >= 0x1p63) return tdms::time::max();
    if (sum <= -0x1p63) return tdms::time::min();
    return time + chrono::nanoseconds(static_cast<std::int64_t>(1e9 * seconds));
}

std::string digits_of(std::int64_t value, std::size_t count)
{
    std::string text = std::to_string(value);
    return std::string(count - std::min(count, text.size()), '0') + text;
}

std::string date_text(chrono::sys_days date)
{
    const chrono::year_month_day fields(date);
    std::string text = digits_of(int{fields.year()}, 4);
    text.append("-").append(digits_of(unsigned{fields.month()}, 2));
    return text.append("-").append(digits_of(unsigned{fields.day()}, 2));
}

// How the labels of the ticks of a step are written.
class tick_format {
  public:
    tick_format(time_step step, bool several_days) : step_(step), several_days_(several_days)
    {
        for (std::int64_t unit = second; unit > step.nanoseconds; unit /= 10) ++decimals_;
    }

    bool has_date() const { return step_.nanoseconds >= day; }
    bool has_day() const { return has_date() && step_.months == 0; }

    std::size_t width() const
    {
        if (has_date()) return step_.months == 0 ? 10 : step_.months % 12 == 0 ? 4 : 7;
        const std::size_t clock = clock_width();
        return several_days_ ? std::max<std::size_t>(clock, 10) : clock;
    }

    std::string text(const shown_time& time) const
    {
        if (has_date()) return date_text(time.date()).substr(0, width());
        if (several_days_ && time.is_midnight()) return date_text(time.date());
        const chrono::hh_mm_ss clock(time.seconds - time.date());
        std::string text = digits_of(clock.hours().count(), 2);
        text.append(":").append(digits_of(clock.minutes().count(), 2));
        text.append(":").append(digits_of(clock.seconds().count(), 2));
        text.append(".").append(digits_of(time.nanoseconds, 9));
        return text.substr(0, clock_width());
    }

  private:
    std::size_t clock_width() const
    {
        if (step_.nanoseconds >= 60 * second) return 5;
        return decimals_ == 0 ? 8 : 9 + decimals_;
    }

    time_step step_;
    bool several_days_;
    std::size_t decimals_ = 0;
};

// Appends the first days of those months that are multiples of a step.
void add_months(std::vector<shown_time>& ticks, const shown_time& first, const shown_time& last,
                int step)
{
    const chrono::year_month_day date(first.date());
    int month = 12 * int{date.year()} + static_cast<int>(unsigned{date.month()}) - 1;
    for (month -= month % step;; month += step) {
        const chrono::sys_days at{chrono::year(month / 12) /
                                  chrono::month(static_cast<unsigned>(month % 12) + 1) / 1};
        if (at > last.seconds) return;
        if (at >= first.seconds) ticks.push_back({at, 0});
    }
}

// Appends multiples of a part of a second. They are counted from the first second, because all
// nanoseconds since 1970 might not fit.
void add_fractions(std::vector<shown_time>& ticks, const shown_time& first, const shown_time& last,
                   std::int64_t step)
{
    const std::int64_t end = (last.seconds - first.seconds).count() * second + last.nanoseconds;
    std::int64_t at = first.nanoseconds / step * step;
    if (at < first.nanoseconds) at += step;
    for (; at <= end; at += step) {
        ticks.push_back({first.seconds + chrono::seconds(at / second), at % second});
    }
}

// Appends multiples of some seconds since a midnight, which for whole weeks is a Monday's.
void add_seconds(std::vector<shown_time>& ticks, const shown_time& first, const shown_time& last,
                 chrono::seconds step)
{
    constexpr chrono::sys_days monday{chrono::days(-3)};
    auto at = first.seconds - (first.seconds - monday) % step - step;
    for (; at <= last.seconds; at += step) {
        const bool after_first = at > first.seconds || (at == first.seconds && !first.nanoseconds);
        if (after_first) ticks.push_back({at, 0});
    }
}

std::vector<shown_time> ticks_of(const shown_time& first, const shown_time& last, time_step step)
{
    std::vector<shown_time> ticks;
    if (step.months != 0) {
        add_months(ticks, first, last, step.months);
    } else if (step.nanoseconds < second) {
        add_fractions(ticks, first, last, step.nanoseconds);
    } else {
        add_seconds(ticks, first, last, chrono::seconds(step.nanoseconds / second));
    }
    return ticks;
}

// The finest step whose labels fit.
time_step fitting_step(double span, bool several_days, std::size_t characters)
{
    const auto fits = [&](const time_step& step) {
        const std::size_t width = tick_format(step, several_days).width() + between_labels;
        return 1e9 * span / static_cast<double>(step.nanoseconds) * static_cast<double>(width) <=
               static_cast<double>(characters);
    };
    const std::vector<time_step> steps = time_steps();
    const auto found = std::ranges::find_if(steps, fits);
    return found == steps.end() ? steps.back() : *found;
}

}  // namespace

axis time_axis(const std::string& name, tdms::time first, tdms::time last, double room,
               std::size_t characters)
{
    const long offset = offset_of(first);
    const double span = seconds_between(shown(first, 0), shown(last, 0));
    axis result{-room * span, (1 + room) * span, {}, name + " (" + zone_of(first) + ')'};
    const shown_time begin = shown(later_by(first, room * -span), offset);
    const shown_time end = shown(later_by(last, room * span), offset);
    const std::string first_date = date_text(shown(first, offset).date());
    const std::string last_date = date_text(shown(last, offset).date());
    const bool several_days = first_date != last_date;
    const time_step step = fitting_step(span, several_days, characters);
    const tick_format format(step, several_days);
    for (const shown_time& t : ticks_of(begin, end, step)) {
        result.ticks.push_back({seconds_between(shown(first, offset), t), format.text(t)});
    }
    if (!format.has_day()) {
        result.label.append(", ").append(first_date);
        if (several_days) result.label.append(" to ").append(last_date);
    }
    return result;
}

}  // namespace tool
