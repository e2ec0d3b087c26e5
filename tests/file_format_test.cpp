// The bytes that saving leaves on disk, and what a second save adds.
#include "support.h"

namespace {

TEST(FileFormat, TheSmallestFileByteForByte)
{
    const scratch_file scratch;
    scratch.fill("something");
    open_tdms file(scratch, "w");
    EXPECT_EQ("", scratch.bytes()) << "emptied, and nothing written before a save";
    EXPECT_EQ(0, create_file_property_string(file.handle, "title", "demo"));
    void* const channel = add_channel(file.add_group("g"), "c");
    const std::int32_t values[] = {1, 2, 3};
    EXPECT_EQ(0, set_channel_data_int32(channel, 3, values));
    EXPECT_EQ(0, save_file(file.handle));
    EXPECT_EQ(0, save_file(file.handle));
    file.close();

    // clang-format off
    const unsigned char first_save[] = {
        'T', 'D', 'S', 'm', 14, 0, 0, 0, 0x69, 0x12, 0, 0, 54, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 0, 0, 0, 0,
        2, 0, 0, 0, 1, 0, 0, 0, '/', 0xFF, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0,
        5, 0, 0, 0, 't', 'i', 't', 'l', 'e', 32, 0, 0, 0, 4, 0, 0, 0, 'd', 'e', 'm', 'o',
        4, 0, 0, 0, '/', '\'', 'g', '\'', 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0,
        'T', 'D', 'S', 'm', 14, 0, 0, 0, 0x69, 0x12, 0, 0, 52, 0, 0, 0, 0, 0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0,
        1, 0, 0, 0, 8, 0, 0, 0, '/', '\'', 'g', '\'', '/', '\'', 'c', '\'',
        20, 0, 0, 0, 3, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0};
    // clang-format on
    const std::string first(std::begin(first_save), std::end(first_save));
    ASSERT_EQ(162u, first.size());
    // The second save has no new properties, and writes the staged values again.
    EXPECT_EQ(first + segment({}) + first.substr(82), scratch.bytes());
}

TEST(FileFormat, EveryKindOfObject)
{
    const scratch_file scratch;
    open_tdms file(scratch, "w");
    void* const b = file.add_group("b");
    void* const a = file.add_group("a");
    EXPECT_EQ(0, create_group_property_int16(b, "n", -2));
    void* const texts = add_channel(a, "texts");
    const char* const words[] = {"ab", "", "cde"};
    EXPECT_EQ(0, set_channel_data_string(texts, 3, words));
    EXPECT_EQ(0, create_channel_property_bool(texts, "p", true));
    add_channel(a, "never filled");
    void* const empty = add_channel(b, "empty");
    EXPECT_EQ(0, set_channel_data_double(empty, 0, nullptr));
    EXPECT_EQ(0, save_file(file.handle));

    // Created after the first save: without properties, a group is never written, its channels are.
    void* const late = add_channel(file.add_group("late"), "x");
    const bool yes[] = {true};
    EXPECT_EQ(0, set_channel_data_bool(late, 1, yes));
    EXPECT_EQ(0, delete_group(a));
    EXPECT_EQ(0, save_file(file.handle));
    file.close();

    const std::string property_n = u32(1) + text("n") + u32(2) + le<std::int16_t>(-2);
    const std::string property_p = u32(1) + text("p") + u32(33) + "\x01";
    const std::string offsets = u32(2) + u32(2) + u32(5);
    EXPECT_EQ(
        segment({object("/", none), object("/'a'", none), object("/'a'/'texts'", none, property_p),
                 object("/'b'", none, property_n)}) +
            segment({object("/'a'/'never filled'", fixed_index(0, 0)),
                     object("/'a'/'texts'", string_index(3, 17)),
                     object("/'b'/'empty'", fixed_index(10, 0))},
                    offsets + "abcde") +
            segment({}) +
            segment({object("/'b'/'empty'", fixed_index(10, 0)),
                     object("/'late'/'x'", fixed_index(33, 1))},
                    "\x01"),
        scratch.bytes());
    EXPECT_EQ(1u, value_count(open_tdms(scratch, "r").channel(2, 0))) << "of a group not listed";
}

// Both timestamp channels state their counts, but only the last one's bytes are stored.
TEST(FileFormat, OfTwoTimestampChannelsTheLastOneIsStored)
{
    const scratch_file scratch;
    open_tdms file(scratch, "w");
    void* const group = file.add_group("g");
    const timestamp_fields first[] = {{1970, 1, 1, 0, 0, 0, 0}};
    const timestamp_fields last[] = {{1970, 1, 1, 0, 1, 0, 0}, {1970, 1, 1, 0, 2, 0, 0}};
    void* const t1 = add_channel(group, "t1");
    EXPECT_EQ(0, set_channel_data_timestamp(t1, 1, first));
    EXPECT_EQ(0, set_channel_data_timestamp(add_channel(group, "t2"), 2, last));
    EXPECT_EQ(0, create_channel_property_uint8(t1, "p", 7));
    EXPECT_EQ(0, save_file(file.handle));
    file.close();

    const std::string property_p = u32(1) + text("p") + u32(5) + "\x07";
    const std::uint64_t epoch = 2082844800;
    EXPECT_EQ(segment({object("/", none), object("/'g'", none),
                       object("/'g'/'t1'", fixed_index(68, 1), property_p),
                       object("/'g'/'t2'", fixed_index(68, 2))},
                      u64(0) + u64(epoch + 60) + u64(0) + u64(epoch + 120)) +
                  segment({}),
              scratch.bytes());

    const open_tdms again(scratch, "r");
    timestamp_fields read[2] = {};
    EXPECT_EQ(0, get_channel_data_timestamp(again.channel(0, 0), read));
    EXPECT_EQ(1, read[0].minute) << "the first bytes are the other channel's";
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_timestamp(again.channel(0, 1), read))
        << "its block begins behind a block that is not there";
}

// A failed staging keeps type, count and bytes of the one before.
TEST(Staging, FailureKeepsWhatWasStaged)
{
    const scratch_file scratch;
    open_tdms file(scratch, "w");
    void* const numbers = add_channel(file.add_group("g"), "n");
    void* const texts = add_channel(file.group(0), "t");
    const std::int32_t value = 7;
    const float other = 1;
    const char* const word[] = {"x"};
    const char* const broken[] = {"y", nullptr};
    EXPECT_EQ(0, set_channel_data_int32(numbers, 1, &value));
    EXPECT_EQ(0, set_channel_data_string(texts, 1, word));
    EXPECT_EQ(3, get_channel_datatype(numbers));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, set_channel_data_float(numbers, 1, &other));
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, set_channel_data_int32(numbers, 2, nullptr));
    EXPECT_EQ("vector::reserve",
              thrown_text([&] { set_channel_data_int32(numbers, ~std::uint64_t{0}, &value); }));
    EXPECT_EQ(null_text, thrown_text([&] { set_channel_data_string(texts, 2, broken); }));
    EXPECT_EQ(0u, value_count(numbers)) << "staging does not change what the file holds";
    EXPECT_EQ(0, save_file(file.handle));
    file.close();
    const std::string bytes = scratch.bytes();
    EXPECT_EQ(
        segment({object("/'g'/'n'", fixed_index(3, 1)), object("/'g'/'t'", string_index(1, 5))},
                u32(7) + u32(1) + "x"),
        bytes.substr(segment({object("/", none), object("/'g'", none)}).size()));
}

}  // namespace
