// Times as calendar fields and as nanoseconds: their bytes, series of them, and summer time.
#include <random>

#include "codec/exported_codec.h"
#include "elements.h"
#include "support.h"

namespace {

using bytes = std::basic_string<unsigned char>;

constexpr std::uint64_t epoch = 2082844800;  // of 1970

bytes encoded(const timestamp_fields& t, bool little = true)
{
    return write_timestamp(t.year, t.month, t.day, t.hour, t.minute, t.second, t.microsecond,
                           little);
}

TEST(Timestamps, BytesOfTheFractionArithmetic)
{
    set_time_zone("UTC");
    const auto two_numbers = [](auto fraction, auto seconds) {
        const std::string chars = u64(fraction) + u64(seconds);
        return bytes(chars.begin(), chars.end());
    };
    const std::tuple<timestamp_fields, std::uint64_t, std::uint64_t> rows[] = {
        {{1970, 1, 1, 0, 0, 0, 500000}, 9223372036850000000, epoch},
        {{1970, 1, 1, 0, 0, 1, 500000}, 9223372036859551616u, epoch + 1},
        {{2000, 2, 29, 0, 0, 0, 0}, 0, epoch + 951782400}};
    for (const auto& [fields, fraction, seconds] : rows) {
        bytes stored = encoded(fields);
        EXPECT_EQ(two_numbers(fraction, seconds), stored);
        EXPECT_TRUE(is_same(fields, read_timestamp(stored.data(), true)));
        // Big-endian, each half is in reverse.
        for (const int half : {0, 8}) std::reverse(&stored[half], &stored[half] + 8);
        EXPECT_EQ(stored, encoded(fields, false));
        EXPECT_TRUE(is_same(fields, read_timestamp(stored.data(), false)));
    }
    // One second before 1970: the unsigned quotient's low 32 bits are read as seconds.
    const timestamp_fields wrapped =
        read_timestamp(two_numbers(std::uint64_t{0}, epoch - 1).data(), true);
    EXPECT_EQ(std::pair(1965, 551616), std::pair(wrapped.year, wrapped.microsecond));
    // Fields without sense have bytes all the same.
    EXPECT_EQ(16u, encoded({INT32_MIN, INT32_MAX, 0, -1, 99, INT32_MIN, INT32_MAX}).size());
}

std::tm local_time(std::time_t t)
{
    std::tm fields{};
    localtime_r(&t, &fields);
    return fields;
}

// When the clock is changed next, to the second; within a year, for a machine may lack the zone.
std::time_t next_change(std::time_t t)
{
    const long offset = local_time(t).tm_gmtoff;
    const std::time_t end = t + 366 * 86400;
    for (const std::time_t step : {3600, 60, 1}) {
        while (t < end && local_time(t + step).tm_gmtoff == offset) t += step;
    }
    return t + 1;
}

// Times around a change of the clock, now in order, now at random; some differ from the one before
// in one field only, and some have a second that belongs to another minute.
std::vector<timestamp_fields> times_around(std::time_t change)
{
    std::mt19937 random;
    const auto below = [&random](int end) { return static_cast<int>(random() % unsigned(end)); };
    std::vector<timestamp_fields> series;
    std::time_t t = change;
    while (series.size() < 20000) {
        const int what = below(16);
        if (what == 0) t = change - 90 + below(180);
        if (what == 1) t = change - 43200 + below(86400);
        if (what > 4) t += below(9);
        const std::tm at = local_time(t);
        const timestamp_fields own{at.tm_year + 1900, at.tm_mon + 1, at.tm_mday,    at.tm_hour,
                                   at.tm_min,         at.tm_sec,     below(1000000)};
        timestamp_fields next = own;
        std::int32_t* const fields[] = {&next.year, &next.month, &next.day, &next.hour,
                                        &next.minute};
        if (what == 2) *fields[below(5)] += below(2) * 2 - 1;
        if (what == 3) next.second = below(60);
        if (what == 4) next.second = below(260) - 100;
        series.push_back(next);
        if (what < 5 && below(2) == 0) series.push_back(own);
    }
    return series;
}

// A series shares conversions; it must come out as one call for each value would have it, also
// where a zone's offset changes within a minute, and where the clock was set back without summer
// time and the answer for a value depends on the calls before.
TEST(Timestamps, ASeriesEqualsOneCallForEachValue)
{
    const std::tuple<const char*, std::time_t> rows[] = {
        {"Europe/Berlin", 1711000000},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1729900000},
        {"LHS-10:30LHD-11,M10.1.0,M4.1.0", 1712300000},
        {"STD-1DST,J61/02:00:17,J182/03:00:41", 1709164800},
        {"STD-1DST,J61/02:00:17,J182/03:00:41", 1719600000},
        {"AAA0:44:30BBB0,J61/00:10:44,J182/00:20:15", 1709164800},
        {"AAA0:44:30BBB0,J61/00:10:44,J182/00:20:15", 1719600000},
        {"Asia/Riyadh", -719720000},
        {"Africa/Monrovia", 63500000}};
    for (const auto& [zone, start] : rows) {
        SCOPED_TRACE(zone);
        set_time_zone(zone);
        const std::vector<timestamp_fields> series = times_around(next_change(start));
        // What mktime() remembers must be the same before the series and before the single calls.
        const timestamp_fields noon = {2000, 1, 1, 12, 0, 0, 0};
        file_of_one_channel written;
        encoded(noon);
        ASSERT_EQ(0, set_channel_data_timestamp(written.channel, series.size(), series.data()));
        written.file.save_and_close();
        std::string single;
        encoded(noon);
        for (const timestamp_fields& fields : series) {
            const bytes stored = encoded(fields);
            single.append(stored.begin(), stored.end());
        }
        const std::string file = written.scratch.bytes();
        ASSERT_TRUE(file.ends_with(single + segment({})));
        std::vector<timestamp_fields> read(series.size());
        const open_tdms again(written.scratch, "r");
        ASSERT_EQ(0, get_channel_data_timestamp(again.channel(0, 0), read.data()));
        for (std::size_t i = 0; i != read.size(); ++i) {
            const auto* const stored = reinterpret_cast<const unsigned char*>(&single[16 * i]);
            ASSERT_TRUE(is_same(read_timestamp(stored, true), read[i])) << i;
        }
    }
}

TEST(Timestamps, FieldsAreStandardTimeWhenWrittenAndClockTimeWhenRead)
{
    set_time_zone("UTC");
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);  // without tzset(), which the library calls
    const std::int64_t noon = 1721044800 * 1000000000LL;  // 2024-07-15T12:00:00Z, 14:00 in summer
    const timestamp_fields clock = {2024, 7, 15, 14, 0, 0, 0};
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    std::int64_t local = 0;
    timestamp_fields fields{};
    expect_each(0, {tdms_create_file_property_nanoseconds(file.handle, "utc", noon),
                    get_file_property_timestamp(file.handle, "utc", &fields),
                    create_file_property_timestamp(file.handle, "local", clock),
                    tdms_get_file_property_nanoseconds(file.handle, "local", &local)});
    EXPECT_EQ(3600 * 1000000000LL, local - noon) << "an hour off";
    EXPECT_TRUE(is_same(clock, fields)) << "as the clock showed it";
}

TEST(Nanoseconds, EveryCountComesBack)
{
    std::vector<std::int64_t> times{INT64_MIN, INT64_MIN + 1, -1, 0, 1, INT64_MAX - 1};
    for (std::mt19937_64 random; times.size() != 10000;) {
        times.push_back(static_cast<std::int64_t>(random()));
    }
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    std::vector<std::int64_t> read(times.size());
    expect_each(
        0, {tdms_append_nanoseconds(channel, times.size(), times.data()), tdms_save(file.handle),
            tdms_read_nanoseconds(channel, 0, read.size(), read.data())});
    EXPECT_EQ(times, read);
    const std::string nanosecond = u64(18446744074) + u64(epoch);
    EXPECT_NE(std::string::npos, scratch.bytes().find(nanosecond)) << "rounded to the nearest";

    // Half a nanosecond is rounded up; what no count reaches becomes the nearest end.
    const std::string raw = u64(9223372037) + u64(epoch) + u64(9223372036) + u64(epoch) +
                            u64(~0ull) + u64(epoch) + u64(0) + u64(1ull << 62) + u64(0) +
                            u64(3ull << 62);
    const scratch_file foreign(segment({object("/'g'/'c'", fixed_index(68, 5))}, raw));
    const tdms_file there(foreign, "r");
    read.resize(5);
    EXPECT_EQ(0, tdms_read_nanoseconds(there.channel("g", "c"), 0, 5, read.data()));
    EXPECT_EQ((std::vector<std::int64_t>{1, 0, 1000000000, INT64_MAX, INT64_MIN}), read);
}

}  // namespace
