#include "files/group_times.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <span>

#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"

namespace tool {
namespace {

namespace chrono = std::chrono;

// Takes the text of a time apart from the front.
class time_parser {
  public:
    explicit time_parser(std::string_view text) : rest_(text) {}

    bool take(char c)
    {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    // A number of that many digits.
    bool take(int& number, std::size_t digits)
    {
        const std::string_view text = rest_.substr(0, digits);
        if (text.size() != digits || !is_number(text)) return false;
        std::from_chars(text.data(), text.data() + text.size(), number);
        rest_.remove_prefix(digits);
        return true;
    }

    // The digits after a decimal point, of which those after the ninth are ignored.
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

// The seconds from UTC to the local time that a clock shows.
std::int64_t local_offset(chrono::sys_seconds shown)
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
    return shown.time_since_epoch().count() - std::mktime(&fields);
}

// Takes times, and finds out whether they ascend.
class order_check {
  public:
    bool read(const tdms::channel& times, std::uint64_t first, std::uint64_t count)
    {
        const std::span<tdms::time> piece(piece_.data(), count);
        times.read(first, piece);
        const bool follows = piece.empty() || piece.front() >= last_;
        if (!piece.empty()) last_ = piece.back();
        return follows && std::ranges::is_sorted(piece);
    }

    static constexpr std::uint64_t most = 4096;  // times at once

  private:
    std::array<tdms::time, most> piece_{};
    tdms::time last_ = tdms::time::min();
};

std::optional<tdms::time> parse(std::string_view text)
{
    time_parser from(text);
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::int64_t nanoseconds = 0;
    if (!from.take(year, 4) || !from.take('-') || !from.take(month, 2) || !from.take('-') ||
        !from.take(day, 2)) {
        return std::nullopt;
    }
    if (from.take('T') || from.take(' ')) {
        if (!from.take(hour, 2) || !from.take(':') || !from.take(minute, 2)) return std::nullopt;
        if (from.take(':') && !from.take(second, 2)) return std::nullopt;
        if ((from.take('.') || from.take(',')) && !from.take_fraction(nanoseconds)) {
            return std::nullopt;
        }
    }
    const chrono::year_month_day date{chrono::year(year), chrono::month(unsigned(month)),
                                      chrono::day(unsigned(day))};
    // Years that nanoseconds in 64 bits reach in full.
    if (!date.ok() || year < 1678 || year > 2261 || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    const chrono::sys_seconds shown = chrono::sys_days(date) + chrono::hours(hour) +
                                      chrono::minutes(minute) + chrono::seconds(second);
    std::int64_t offset = 0;
    const bool west = from.take('-');
    if (west || from.take('+')) {
        if (!from.take(hour, 2)) return std::nullopt;
        from.take(':');
        minute = 0;
        if (!from.at_end() && !from.take(minute, 2)) return std::nullopt;
        if (hour > 23 || minute > 59) return std::nullopt;
        offset = (west ? -60 : 60) * std::int64_t{60 * hour + minute};
    } else if (!from.take('Z')) {
        offset = times_are_local() ? local_offset(shown) : 0;
    }
    if (!from.at_end()) return std::nullopt;
    return shown - chrono::seconds(offset) + chrono::nanoseconds(nanoseconds);
}

}  // namespace

std::optional<selected_channel> time_channel_of(const tdms::group& g, std::uint64_t count)
{
    std::optional<selected_channel> found;
    for (const tdms::channel& c : g.channels()) {
        if (c.type() != TDMS_TYPE_TIMESTAMP) continue;
        const selected_channel times(g, c);
        if (times.count == 0 || times.count < count) continue;
        if (!found || c.name() == "time") found = times;
    }
    return found;
}

selected_channel required_times(const tdms::group& g, std::uint64_t count)
{
    if (const auto times = time_channel_of(g, count)) return *times;
    throw failure("the group " + in_quotes(g.name()) +
                  " has no timestamp channel with a time for every value");
}

std::optional<double> sampling_rate_of(const selected_channel& c)
{
    constexpr std::string_view name = "sampling rate";
    for (const tdms::object& of : {tdms::object(c.channel), tdms::object(c.group)}) {
        if (!of.properties().contains(name)) continue;
        const tdms::property_value value = of.properties().at(name);
        const auto as_number = [](const auto& v) -> double {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(v)>>) {
                return static_cast<double>(v);
            } else {
                return 0;
            }
        };
        const double rate = std::visit(as_number, value);
        if (rate > 0 && std::isfinite(rate)) return rate;
    }
    return std::nullopt;
}

std::uint64_t row_at(const selected_channel& times, tdms::time time)
{
    std::uint64_t low = 0;
    std::uint64_t high = times.count;
    while (low != high) {
        const std::uint64_t middle = low + (high - low) / 2;
        std::array<tdms::time, 1> found;
        times.channel.read(middle, found);
        if (found[0] < time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

bool ascend(const selected_channel& times, std::uint64_t first, std::uint64_t end)
{
    constexpr std::uint64_t samples = 64;
    const std::uint64_t step = times.count / samples;
    const std::uint64_t size = std::min(step, samples);
    order_check sampled;
    for (std::uint64_t i = 0; step > samples && i != samples; ++i) {
        if (!sampled.read(times.channel, i * step, size)) return false;
    }
    if (step <= samples) {  // few enough for all
        first = 0;
        end = times.count;
    }
    order_check all;
    while (first < end) {
        const std::uint64_t count = std::min(order_check::most, end - first);
        if (!all.read(times.channel, first, count)) return false;
        first += count;
    }
    return true;
}

tdms::time time_from(const std::string& text)
{
    if (const std::optional<tdms::time> time = parse(text)) return *time;
    throw usage_error("not a time: " + in_quotes(text) +
                      "; times are such as 2026-05-04T10:00:00Z, or 2026-05-04");
}

}  // namespace tool
