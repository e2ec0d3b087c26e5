// Values and timestamps against their bytes.
#include "codec/exported_codec.h"
#include "codec/short_move.h"
#include "elements.h"
#include "support.h"

namespace {

using bytes = std::basic_string<unsigned char>;

// A value's bytes in both orders, there and back.
template <class T, class Write, class Read>
void expect_bytes(Write write, Read read, T value, bytes expected)
{
    SCOPED_TRACE(::testing::PrintToString(value));
    EXPECT_EQ(expected, write(value, true));
    EXPECT_EQ(value, read(expected.data(), true));
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(expected, write(value, false));
    EXPECT_EQ(value, read(expected.data(), false));
}

TEST(ValueCodec, NumbersInBothByteOrders)
{
    expect_bytes<std::int16_t>(write_int16, read_int16, -2, {0xFE, 0xFF});
    expect_bytes<std::uint16_t>(write_uint16, read_uint16, 0x1234, {0x34, 0x12});
    expect_bytes<std::int32_t>(write_int32, read_int32, -3, {0xFD, 0xFF, 0xFF, 0xFF});
    expect_bytes<std::uint32_t>(write_uint32, read_uint32, 0x12345678, {0x78, 0x56, 0x34, 0x12});
    expect_bytes<std::int64_t>(write_int64, read_int64, -4,
                               {0xFC, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    expect_bytes<std::uint64_t>(write_uint64, read_uint64, 0x0807060504030201,
                                {1, 2, 3, 4, 5, 6, 7, 8});
    expect_bytes<float>(write_float, read_float, 1, {0, 0, 0x80, 0x3F});
    expect_bytes<double>(write_double, read_double, -2, {0, 0, 0, 0, 0, 0, 0, 0xC0});
    EXPECT_EQ(write_int8(-1) + write_uint8(254) + write_bool(true), (bytes{0xFF, 0xFE, 1}));
    const unsigned char stored[] = {0xF8, 2};
    EXPECT_EQ(-8, read_int8(stored));
    EXPECT_EQ(0xF8, read_uint8(stored));
    EXPECT_TRUE(read_bool(stored + 1));
}

TEST(ValueCodec, Strings)
{
    const std::string with_zero("a\0b", 3);
    const bytes little{3, 0, 0, 0, 'a', 0, 'b'};
    EXPECT_EQ(little, write_string(with_zero, true));
    EXPECT_EQ(with_zero, read_string(little.data(), true));
    EXPECT_EQ(with_zero, read_string(bytes{0, 0, 0, 3, 'a', 0, 'b'}.data(), false));
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
}

// Whichever way two places overlap.
TEST(ShortMove, DoesWhatMemmoveDoes)
{
    for (std::size_t size = 0; size != 70; ++size) {
        for (std::size_t target = 0; target != 140; ++target) {
            unsigned char moved[210];
            for (std::size_t i = 0; i != sizeof moved; ++i)
                moved[i] = static_cast<unsigned char>(i);
            unsigned char expected[sizeof moved];
            std::memcpy(expected, moved, sizeof moved);
            std::memmove(expected + target, expected + 70, size);
            tdms_impl::short_move(moved + target, moved + 70, size);
            ASSERT_EQ(0, std::memcmp(expected, moved, sizeof moved)) << size << " to " << target;
        }
    }
}

TEST(LeadIn, LengthsWrapAndFailuresWriteNothing)
{
    bytes lead = write_leadIn(40, 12);
    EXPECT_EQ(lead_in(40, 12), std::string(lead.begin(), lead.end()));
    unsigned long metadata = 0;
    unsigned long raw = 0;
    lead[12] = 39;
    EXPECT_EQ(0, read_leadIn(lead.data(), metadata, raw));
    EXPECT_EQ(~0ul, raw);
    lead[8] = 0;
    lead[20] = 5;
    EXPECT_EQ(TDMS_FILE_VERSION, read_leadIn(lead.data(), metadata, raw));
    EXPECT_EQ(40u, metadata);
}

bytes encoded(const timestamp_fields& t)
{
    return write_timestamp(t.year, t.month, t.day, t.hour, t.minute, t.second, t.microsecond, true);
}

TEST(TimestampCodec, BytesOfTheFractionArithmetic)
{
    set_time_zone("UTC");
    const std::uint64_t epoch = 2082844800;
    const auto expect_both_ways = [](timestamp_fields fields, unsigned long fraction,
                                     unsigned long seconds) {
        const bytes stored = encoded(fields);
        EXPECT_EQ(write_uint64(fraction, true) + write_uint64(seconds, true), stored);
        EXPECT_TRUE(is_same(fields, read_timestamp(stored.data(), true)));
    };
    expect_both_ways({1970, 1, 1, 0, 0, 0, 500000}, 9223372036850000000, epoch);
    expect_both_ways({1970, 1, 1, 0, 0, 1, 500000}, 9223372036859551616u, epoch + 1);
    expect_both_ways({2000, 2, 29, 0, 0, 0, 0}, 0, epoch + 951782400);
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

// A series shares conversions; it must come out as one call for each value would have it, also
// where a zone's offset changes within a minute, and where the clock was set back without summer
// time and the answer for a value depends on the calls before.
TEST(TimestampCodec, ASeriesEqualsOneCallForEachValue)
{
    const std::pair<const char*, std::time_t> rows[] = {
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1729900000},
        {"STD-1DST,J61/02:00:17,J182/03:00:41", 1709164800},
        {"LHS-10:30LHD-11,M10.1.0,M4.1.0", 1712300000},
        {"AAA0:44:30BBB0,J61/00:10:44,J182/00:20:15", 1709164800},
        {"Asia/Riyadh", -719720000},
        {"Africa/Monrovia", 63500000}};
    for (const auto& [name, start] : rows) {
        SCOPED_TRACE(name);
        set_time_zone(name);
        std::vector<timestamp_fields> series;
        // Forward in steps below a minute over some days, then backward; a few twice, and a few
        // seconds that belong to another minute.
        for (int i = 0; i != 40000; ++i) {
            const std::time_t t = start + 11LL * (i < 20000 ? i : 39999 - i);
            std::tm at{};
            localtime_r(&t, &at);
            series.push_back({at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, at.tm_hour, at.tm_min,
                              at.tm_sec, i});
            if (i % 7 == 0) series.push_back(series.back());
            if (i % 100 == 0) series.back().second += 60;
        }
        // What mktime() remembers must be the same before the series and before the single calls.
        const timestamp_fields noon = {2000, 1, 1, 12, 0, 0, 0};
        new_file written;
        encoded(noon);
        ASSERT_EQ(0, set_channel_data_timestamp(written.channel, series.size(), series.data()));
        written.file.save_and_close();
        std::string single;
        encoded(noon);
        for (const timestamp_fields& fields : series) {
            const bytes stored = encoded(fields);
            single.append(stored.begin(), stored.end());
        }
        ASSERT_TRUE(written.scratch.bytes().ends_with(single + segment({})));
        std::vector<timestamp_fields> read(series.size());
        const open_tdms again(written.scratch, "r");
        ASSERT_EQ(0, get_channel_data_timestamp(again.channel(0, 0), read.data()));
        for (std::size_t i = 0; i != read.size(); ++i) {
            const auto* const stored = reinterpret_cast<const unsigned char*>(&single[16 * i]);
            ASSERT_TRUE(is_same(read_timestamp(stored, true), read[i])) << i;
        }
    }
}

}  // namespace
