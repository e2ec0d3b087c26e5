// Numbers, strings and lead-ins against their bytes.
#include "codec/exported_codec.h"
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
    EXPECT_EQ((bytes{0, 0, 0, 1, 'a'}), write_string_data({"a"}, false));
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

}  // namespace
