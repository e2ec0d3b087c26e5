// Values and timestamps against their bytes.
#include <cstdlib>
#include <ctime>

#include "codec/layout.h"
#include "codec/timestamp_codec.h"
#include "codec/value_codec.h"
#include "elements.h"
#include "reader/lead_in.h"
#include "support.h"

namespace {

using bytes = std::basic_string<unsigned char>;

const unsigned char count_up[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0xF8};

bytes reversed(const bytes& b)
{
    return {b.rbegin(), b.rend()};
}

TEST(ValueCodec, NumbersInBothByteOrders)
{
    EXPECT_EQ(0x0201, read_int16(count_up, true));
    EXPECT_EQ(0x0102, read_uint16(count_up, false));
    EXPECT_EQ(0x04030201, read_int32(count_up, true));
    EXPECT_EQ(0x01020304u, read_uint32(count_up, false));
    EXPECT_EQ(static_cast<long>(0xF807060504030201), read_int64(count_up, true));
    EXPECT_EQ(0x01020304050607F8u, read_uint64(count_up, false));
    EXPECT_EQ(-8, read_int8(count_up + 7));
    EXPECT_EQ(0xF8, read_uint8(count_up + 7));
    EXPECT_EQ(-2048 + 7, read_int16(bytes{0xF8, 0x07}.data(), false));
    EXPECT_TRUE(read_bool(count_up + 1));

    const struct {
        bytes little;
        bytes big;
        bytes expected;
    } rows[] = {
        {write_int16(-2, true), write_int16(-2, false), {0xFE, 0xFF}},
        {write_uint16(0x1234, true), write_uint16(0x1234, false), {0x34, 0x12}},
        {write_int32(-3, true), write_int32(-3, false), {0xFD, 0xFF, 0xFF, 0xFF}},
        {write_uint32(0x12345678, true), write_uint32(0x12345678, false), {0x78, 0x56, 0x34, 0x12}},
        {write_int64(-4, true),
         write_int64(-4, false),
         {0xFC, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {write_uint64(1, true), write_uint64(1, false), {1, 0, 0, 0, 0, 0, 0, 0}},
        {write_float(1.0F, true), write_float(1.0F, false), {0, 0, 0x80, 0x3F}},
        {write_double(-2.0, true), write_double(-2.0, false), {0, 0, 0, 0, 0, 0, 0, 0xC0}},
        {write_int8(-1), write_uint8(255), {0xFF}},
        {write_bool(true), write_uint8(1), {1}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.expected, row.little) << "row " << &row - rows;
        EXPECT_EQ(reversed(row.expected), row.big) << "row " << &row - rows;
    }
    EXPECT_EQ(1.0F, read_float(bytes{0x3F, 0x80, 0, 0}.data(), false));
    EXPECT_EQ(-2.0, read_double(write_double(-2.0, true).data(), true));
}

TEST(ValueCodec, Strings)
{
    const std::string with_zero("a\0b", 3);
    const bytes little{3, 0, 0, 0, 'a', 0, 'b'};
    EXPECT_EQ(little, write_string(with_zero, true));
    EXPECT_EQ(with_zero, read_string(little.data(), true));
    EXPECT_EQ(with_zero, read_string(bytes{0, 0, 0, 3, 'a', 0, 'b'}.data(), false));
    EXPECT_EQ((bytes{0, 0, 0, 0}), write_string("", false));
    unsigned long length = 0;
    EXPECT_EQ('a', read_char(little.data(), length, true));
    EXPECT_EQ(3u, length);
    EXPECT_EQ(std::vector<unsigned char>(little.begin(), little.end()),
              read_string_data(little.data()));
    EXPECT_EQ((bytes{3, 0, 0}), read_string_data(little.data(), 3));
    EXPECT_EQ((std::vector<unsigned char>{3, 0}), read_data(little.data(), 2));
    EXPECT_TRUE(read_data(nullptr, 0).empty());
    EXPECT_EQ((bytes{2, 0, 0, 0, 2, 0, 0, 0, 5, 0, 0, 0, 'a', 'b', 'c', 'd', 'e'}),
              write_string_data({"ab", "", "cde"}, true));
    EXPECT_TRUE(write_string_data({}, true).empty());
}

TEST(LeadIn, LengthsAndWrapping)
{
    bytes lead = write_leadIn(40, 12);
    EXPECT_EQ(lead_in(40, 12), std::string(lead.begin(), lead.end()));
    unsigned long metadata = 0;
    unsigned long raw = 0;
    EXPECT_EQ(0, read_leadIn(lead.data(), metadata, raw));
    EXPECT_EQ(40u, metadata);
    EXPECT_EQ(12u, raw);
    lead[12] = 39;
    EXPECT_EQ(0, read_leadIn(lead.data(), metadata, raw));
    EXPECT_EQ(~0ul, raw);
    lead[8] = 0;
    metadata = 5;
    EXPECT_EQ(TDMS_FILE_VERSION, read_leadIn(lead.data(), metadata, raw));
    EXPECT_EQ(5u, metadata);
}

// Sets the time zone for one test.
class in_zone {
  public:
    explicit in_zone(const char* name)
    {
        setenv("TZ", name, 1);
        tzset();
    }
    ~in_zone()
    {
        unsetenv("TZ");
        tzset();
    }
    in_zone(const in_zone&) = delete;
    in_zone& operator=(const in_zone&) = delete;
};

bytes encoded(const timestamp_fields& t)
{
    return write_timestamp(t.year, t.month, t.day, t.hour, t.minute, t.second, t.microsecond, true);
}

TEST(TimestampCodec, BytesOfTheFractionArithmetic)
{
    const in_zone utc("UTC");
    const std::uint64_t epoch = 2082844800;
    const struct {
        timestamp_fields fields;
        std::uint64_t fraction;
        std::uint64_t seconds;
    } rows[] = {
        {{1970, 1, 1, 0, 0, 0, 0}, 0, epoch},
        {{1970, 1, 1, 0, 0, 0, 500000}, 9223372036850000000u, epoch},
        {{1970, 1, 1, 0, 0, 1, 0}, 9551616, epoch + 1},
        {{1970, 1, 1, 0, 0, 1, 500000}, 9223372036859551616u, epoch + 1},
        {{2000, 2, 29, 0, 0, 0, 0}, 0, epoch + 951782400},
    };
    for (const auto& row : rows) {
        const bytes stored = encoded(row.fields);
        EXPECT_EQ(write_uint64(row.fraction, true) + write_uint64(row.seconds, true), stored);
        EXPECT_TRUE(is_same(row.fields, read_timestamp(stored.data(), true)));
    }
    const bytes big = write_timestamp(1970, 1, 1, 0, 0, 1, 0, false);
    EXPECT_EQ(write_uint64(9551616, false) + write_uint64(epoch + 1, false), big);
    EXPECT_EQ(1, read_timestamp(big.data(), false).second);
    // One second before 1970: the unsigned quotient's low 32 bits are read as seconds.
    const bytes before = write_uint64(0, true) + write_uint64(epoch - 1, true);
    const timestamp_fields wrapped = read_timestamp(before.data(), true);
    EXPECT_EQ(1965, wrapped.year);
    EXPECT_EQ(551616, wrapped.microsecond);
    // Fields without sense have bytes all the same.
    EXPECT_EQ(16u,
              write_timestamp(INT32_MIN, INT32_MAX, 0, -1, 99, INT32_MIN, INT32_MAX, true).size());
}

TEST(TimestampCodec, SummerTimeComesBackAnHourLater)
{
    const in_zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const timestamp_fields winter = {2024, 1, 15, 12, 30, 15, 250000};
    const timestamp_fields summer = {2024, 7, 15, 12, 30, 15, 250000};
    timestamp_fields later = summer;
    later.hour = 13;
    EXPECT_TRUE(is_same(winter, read_timestamp(encoded(winter).data(), true)));
    EXPECT_TRUE(is_same(later, read_timestamp(encoded(summer).data(), true)));
}

// A series shares conversions; it must come out as one call for each value would have it, also
// where a zone's offset changes within a minute, and where the clock was set back without summer
// time and the answer for a value depends on the calls before.
TEST(TimestampCodec, ASeriesEqualsOneCallForEachValue)
{
    const struct {
        const char* zone;
        std::time_t start;
    } rows[] = {
        {"UTC", 1709164800},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1729900000},
        {"STD-1DST,J61/02:00:17,J182/03:00:41", 1709164800},
        {"LHS-10:30LHD-11,M10.1.0,M4.1.0", 1712300000},
        {"AAA0:44:30BBB0,J61/00:10:44,J182/00:20:15", 1709164800},
        {"WGT3:00:07", 1709164800},
        {"Asia/Baku", -1441250000},
        {"Asia/Riyadh", -719720000},
        {"Africa/Monrovia", 63500000},
    };
    // What mktime() remembers must be the same before the series and before the single calls.
    const auto forget = [] {
        std::tm noon{};
        noon.tm_mday = 1;
        noon.tm_hour = 12;
        noon.tm_year = 100;
        std::mktime(&noon);
    };
    for (const auto& row : rows) {
        const in_zone zone(row.zone);
        std::vector<timestamp_fields> series;
        // Forward in steps below a minute over some days, then backward; a few twice, and a few
        // seconds that belong to another minute.
        for (int i = 0; i != 40000; ++i) {
            const int step = i < 20000 ? i : 39999 - i;
            const std::time_t t = row.start + step * 11LL;
            std::tm local{};
            localtime_r(&t, &local);
            series.push_back({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                              local.tm_min, local.tm_sec, i});
            if (i % 7 == 0) series.push_back(series.back());
            if (i % 100 == 0) series.back().second += 60;
        }
        const scratch_file scratch;
        open_tdms file(scratch, "w");
        void* const channel = add_channel(file.add_group("g"), "t");
        forget();
        ASSERT_EQ(0, set_channel_data_timestamp(channel, series.size(), series.data()));
        ASSERT_EQ(0, save_file(file.handle));
        file.close();
        const std::string saved = scratch.bytes();
        const std::size_t raw = saved.size() - segment({}).size() - 16 * series.size();
        const auto* const stored = reinterpret_cast<const unsigned char*>(saved.data()) + raw;
        const open_tdms again(scratch, "r");
        std::vector<timestamp_fields> read(series.size());
        ASSERT_EQ(0, get_channel_data_timestamp(again.channel(0, 0), read.data()));
        forget();
        for (std::size_t i = 0; i != series.size(); ++i) {
            const timestamp_fields& f = series[i];
            std::tm fields{};
            fields.tm_year = f.year - 1900;
            fields.tm_mon = f.month - 1;
            fields.tm_mday = f.day;
            fields.tm_hour = f.hour;
            fields.tm_min = f.minute;
            fields.tm_sec = f.second;
            const std::time_t t = std::mktime(&fields);
            ASSERT_EQ(t + 2082844800, read_int64(stored + 16 * i + 8, true)) << row.zone << i;
            if (t < 0) continue;  // does not read back
            const std::tm local = *std::localtime(&t);
            ASSERT_EQ(local.tm_hour * 10000 + local.tm_min * 100 + local.tm_sec,
                      read[i].hour * 10000 + read[i].minute * 100 + read[i].second)
                << row.zone << i;
            ASSERT_EQ(f.microsecond, read[i].microsecond);
        }
    }
}

}  // namespace
