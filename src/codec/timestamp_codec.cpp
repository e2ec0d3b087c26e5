#include "codec/timestamp_codec.h"

#include <algorithm>
#include <ctime>

#include "codec/byte_order.h"

namespace tdms_impl {
namespace {

// Deliberate: 2^64 / 10^6 cut to a multiple of 100, in both directions.
constexpr std::uint64_t fraction_per_microsecond = 18446744073700;

constexpr std::uint32_t microseconds_per_second = 1000000;

// Fields may have any value; differences that overflow wrap.
int wrapping_difference(std::int32_t a, std::uint32_t b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) - b);
}

std::int64_t local_to_seconds(const timestamp_fields& t)
{
    std::tm fields{};
    fields.tm_year = wrapping_difference(t.year, 1900);
    fields.tm_mon = wrapping_difference(t.month, 1);
    fields.tm_mday = t.day;
    fields.tm_hour = t.hour;
    fields.tm_min = t.minute;
    fields.tm_sec = t.second;
    // Deliberate: tm_isdst stays 0, so the fields are standard time also in summer.
    return std::mktime(&fields);
}

// mktime() is slow, and many samples fall in the same minute. Once mktime() has placed two seconds
// of a minute exactly as far apart as their fields, all between follow by addition. It is never
// called for a value not given: after a clock change its answer depends on earlier calls.
class calendar_to_seconds {
  public:
    std::int64_t operator()(const timestamp_fields& t)
    {
        const bool known = same_minute(t) && t.second >= first_ && t.second <= last_;
        return known ? start_ + t.second : convert(t);
    }

  private:
    bool same_minute(const timestamp_fields& t) const
    {
        return t.minute == minute_.minute && t.hour == minute_.hour && t.day == minute_.day &&
               t.month == minute_.month && t.year == minute_.year;
    }

    std::int64_t convert(const timestamp_fields& t)
    {
        const std::int64_t seconds = local_to_seconds(t);
        const bool continues = same_minute(t) && first_ <= last_ && seconds - t.second == start_;
        // A second outside 0-59 is in another minute: forget this one.
        const bool within = t.second >= 0 && t.second <= 59;
        minute_ = t;
        start_ = seconds - t.second;
        first_ = within ? (continues ? std::min(first_, t.second) : t.second) : 1;
        last_ = within ? (continues ? std::max(last_, t.second) : t.second) : 0;
        return seconds;
    }

    timestamp_fields minute_{};
    std::int64_t start_ = 0;  // of the minute
    std::int32_t first_ = 1;  // the seconds between which addition holds; at first none
    std::int32_t last_ = 0;
};

std::tm localtime_of(std::int64_t seconds)
{
    const std::time_t t = seconds;
    std::tm fields{};
    localtime_r(&t, &fields);
    return fields;
}

// localtime() is as slow. When a minute comes up again, its first and last second are converted; if
// the clock does not change between them, all its seconds follow by addition. tzset() makes a
// change of TZ take effect, as localtime() does.
class seconds_to_calendar {
  public:
    seconds_to_calendar() { tzset(); }

    timestamp_fields fields(std::int64_t seconds, std::int32_t microsecond)
    {
        const bool seen = state_ != state::none && seconds >= start_ && seconds - start_ < 60;
        if (seen && state_ == state::seen_once) measure();
        if (seen && state_ == state::even) {
            minute_.tm_sec = static_cast<int>(seconds - start_);
            return calendar(minute_, microsecond);
        }
        const std::tm converted = localtime_of(seconds);
        if (!seen) {
            start_ = seconds - converted.tm_sec;
            state_ = state::seen_once;
        }
        return calendar(converted, microsecond);
    }

  private:
    enum class state { none, seen_once, even, uneven };

    static timestamp_fields calendar(const std::tm& t, std::int32_t microsecond)
    {
        return {t.tm_year + 1900, t.tm_mon + 1, t.tm_mday,  t.tm_hour,
                t.tm_min,         t.tm_sec,     microsecond};
    }

    void measure()
    {
        minute_ = localtime_of(start_);
        const std::tm end = localtime_of(start_ + 59);
        const bool even = minute_.tm_sec == 0 && end.tm_sec == 59 && minute_.tm_min == end.tm_min &&
                          minute_.tm_gmtoff == end.tm_gmtoff;
        state_ = even ? state::even : state::uneven;
    }

    std::tm minute_{};
    std::int64_t start_ = 0;
    state state_ = state::none;
};

void encode(const timestamp_fields& t, calendar_to_seconds& clock, unsigned char* p, bool little)
{
    // Deliberate: the seconds are taken off the microseconds in 32 bits. Multiplied by the unit,
    // this adds under a picosecond per second.
    const std::int32_t f = wrapping_difference(
        t.microsecond, microseconds_per_second * static_cast<std::uint32_t>(t.second));
    store(p, static_cast<std::uint64_t>(static_cast<std::int64_t>(f)) * fraction_per_microsecond,
          little);
    store(p + 8, clock(t) + seconds_from_1904_to_1970, little);
}

timestamp_fields decode(const unsigned char* p, seconds_to_calendar& clock, bool little)
{
    const std::uint64_t seconds = load<std::uint64_t>(p + 8, little) - seconds_from_1904_to_1970;
    const std::uint64_t microseconds = seconds * microseconds_per_second +
                                       load<std::uint64_t>(p, little) / fraction_per_microsecond;
    // Deliberate: an unsigned quotient, of which 32 bits are kept. Only times from 1970-01-01 to
    // 2038-01-19 read back.
    const auto t = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(microseconds / microseconds_per_second));
    return clock.fields(t, static_cast<std::int32_t>(microseconds % microseconds_per_second));
}

}  // namespace

void encode_timestamps(const timestamp_fields* values, std::uint64_t count, unsigned char* target,
                       bool little)
{
    calendar_to_seconds clock;
    for (std::uint64_t i = 0; i != count; ++i) {
        encode(values[i], clock, target + timestamp_size * i, little);
    }
}

void decode_timestamps(const unsigned char* bytes, std::uint64_t count, timestamp_fields* values,
                       bool little)
{
    seconds_to_calendar clock;
    for (std::uint64_t i = 0; i != count; ++i) {
        values[i] = decode(bytes + timestamp_size * i, clock, little);
    }
}

}  // namespace tdms_impl
