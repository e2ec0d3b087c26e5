// The bytes that saving leaves on disk, and what a second save adds.
#include "support.h"

namespace {

using FileFormat = FileOfOneChannel;

TEST_F(FileFormat, TheSmallestFileByteForByte)
{
    EXPECT_EQ("", scratch.bytes()) << "nothing is written before a save";
    const std::int32_t values[] = {1, 2, 3};
    expect_each(0, {create_file_property_string(file.handle, "title", "demo"),
                    set_channel_data_int32(channel, 3, values), save_file(file.handle)});
    file.save_and_close();

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
    // The second save has no new properties, and writes the staged values again.
    EXPECT_EQ(first + segment({}) + first.substr(82), scratch.bytes());
}

TEST_F(FileFormat, EveryKindOfObject)
{
    void* const a = file.add_group("a");
    void* const strings = add_channel(a, "strings");
    const char* const words[] = {"ab", "", "cde"};
    expect_each(0, {create_group_property_int16(group, "n", -2),
                    set_channel_data_double(channel, 0, nullptr),
                    set_channel_data_string(strings, 3, words),
                    create_channel_property_bool(strings, "p", true)});
    add_channel(a, "never filled");
    EXPECT_EQ(0, save_file(file.handle));

    // Created after the first save: without properties, a group is never written, its channels are.
    void* const late = add_channel(file.add_group("late"), "x");
    const bool yes = true;
    expect_each(0, {set_channel_data_bool(late, 1, &yes), delete_group(a)});
    file.save_and_close();

    const std::string property_n = u32(1) + prefixed("n") + u32(2) + le<std::int16_t>(-2);
    EXPECT_EQ(segment({object("/", none), object("/'a'", none),
                       object("/'a'/'strings'", none, property_p(33, "\x01")),
                       object("/'g'", none, property_n)}) +
                  segment({object("/'a'/'never filled'", fixed_index(0, 0)),
                           object("/'a'/'strings'", string_index(3, 17)),
                           object("/'g'/'c'", fixed_index(10, 0))},
                          u32(2) + u32(2) + u32(5) + "abcde") +
                  segment({}) +
                  segment({object("/'g'/'c'", fixed_index(10, 0)),
                           object("/'late'/'x'", fixed_index(33, 1))},
                          "\x01"),
              scratch.bytes());
    EXPECT_EQ(1u, value_count(open_tdms(scratch, "r").channel(2, 0))) << "of a group not listed";
}

// Both timestamp channels state their counts, but only the last one's bytes are stored: the first
// one reads those, and the block of the last begins after one that is not there.
TEST_F(FileFormat, OfTwoTimestampChannelsTheLastOneIsStored)
{
    set_time_zone("UTC");
    const timestamp_fields times[] = {{1970, 1, 1, 0, 1, 0, 0}, {1970, 1, 1, 0, 2, 0, 0}};
    expect_each(0, {set_channel_data_timestamp(channel, 1, times + 1),
                    set_channel_data_timestamp(add_channel(group, "d"), 2, times),
                    create_channel_property_uint8(channel, "p", 7)});
    file.save_and_close();
    const std::uint64_t epoch = 2082844800;
    EXPECT_EQ(segment({object("/", none), object("/'g'", none),
                       object("/'g'/'c'", fixed_index(68, 1), property_p(5, "\x07")),
                       object("/'g'/'d'", fixed_index(68, 2))},
                      u64(0) + u64(epoch + 60) + u64(0) + u64(epoch + 120)) +
                  segment({}),
              scratch.bytes());
    const open_tdms again(scratch, "r");
    timestamp_fields read[2] = {};
    EXPECT_EQ(0, get_channel_data_timestamp(again.channel(0, 0), read));
    EXPECT_EQ(1, read[0].minute);
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_timestamp(again.channel(0, 1), read));
}

// A failed staging keeps type, count and bytes of the one before.
TEST_F(FileFormat, AFailedStagingChangesNothing)
{
    void* const strings = add_channel(group, "t");
    const std::int32_t value = 7;
    const float other = 1;
    const char* const word[] = {"x"};
    const char* const broken[] = {"y", nullptr};
    expect_each(
        0, {set_channel_data_int32(channel, 1, &value), set_channel_data_string(strings, 1, word)});
    EXPECT_EQ(3, get_channel_datatype(channel));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, set_channel_data_float(channel, 1, &other));
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, set_channel_data_int32(channel, 2, nullptr));
    EXPECT_EQ("vector::reserve",
              thrown_message([&] { set_channel_data_int32(channel, ~std::uint64_t{0}, &value); }));
    EXPECT_EQ(null_message, thrown_message([&] { set_channel_data_string(strings, 2, broken); }));
    EXPECT_EQ(0u, value_count(channel)) << "staging does not change what the file holds";
    file.save_and_close();
    EXPECT_EQ(segment({object("/", none), object("/'g'", none)}) +
                  segment({int32s("/'g'/'c'", 1), object("/'g'/'t'", string_index(1, 5))},
                          u32(7) + u32(1) + "x"),
              scratch.bytes());
}

// What a mode reads: nothing in "w", and in "a" only what was there, as long as it was nothing.
TEST_F(FileFormat, ModesThatDoNotRead)
{
    const std::int32_t value = 5;
    expect_each(0, {set_channel_data_int32(channel, 1, &value), save_file(file.handle),
                    get_channel_data_int32(channel, nullptr)});
    file.save_and_close();  // after the first save: reading did not move the stream
    const std::string two_saves = scratch.bytes();
    const open_tdms appended(scratch, "a");
    void* const read = appended.channel(0, 0);
    EXPECT_EQ(2u, value_count(read));
    expect_each(0, {set_channel_data_int32(read, 1, &value), save_file(appended.handle),
                    create_file_property_int8(appended.handle, "p", 1)});
    std::int32_t untouched[2] = {8, 9};
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(read, untouched));
    EXPECT_EQ(TDMS_FILE_HANDLE, save_file(appended.handle)) << "the failed read closed the stream";
    EXPECT_EQ(1, get_num_file_property(appended.handle)) << "nothing is lost from memory";
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(read, untouched));
    EXPECT_EQ(8, untouched[0]);
    EXPECT_EQ(two_saves + segment({}) + two_saves.substr(two_saves.size() - 72), scratch.bytes());

    const scratch_file empty("");
    const open_tdms fresh(empty, "a");
    void* const first = add_channel(fresh.add_group("g"), "c");
    expect_each(0, {set_channel_data_int32(first, 1, &value),
                    get_channel_data_int32(first, nullptr), save_file(fresh.handle)});
}

}  // namespace
