// Values over many saves and in every mode.
#include "support.h"

namespace {

// The count of a channel that was read and not staged is stated again, without values.
TEST(Values, AppendingWithoutStaging)
{
    const std::string whole = segment({int32s("/'g'/'c'", 2)}, u32(1) + u32(2));
    const scratch_file scratch(whole);
    open_tdms file(scratch, "a");
    EXPECT_EQ(0, save_file(file.handle));
    EXPECT_EQ(0, set_channel_data_int32(file.channel(0, 0), 0, nullptr));
    file.save_and_close();
    EXPECT_EQ(whole + segment({}) + segment({int32s("/'g'/'c'", 2)}) + segment({}) +
                  segment({int32s("/'g'/'c'", 0)}),
              scratch.bytes());
}

// What a mode reads: nothing in "w", and in "a" only what was there, as long as it was nothing.
TEST(Values, ModesThatDoNotRead)
{
    new_file written;
    const std::int32_t value = 5;
    EXPECT_EQ(0, set_channel_data_int32(written.channel, 1, &value));
    EXPECT_EQ(0, save_file(written.file.handle));
    EXPECT_EQ(0, get_channel_data_int32(written.channel, nullptr));
    written.file.save_and_close();  // behind the first save: reading did not move the stream
    const std::string two_saves = written.scratch.bytes();

    open_tdms file(written.scratch, "a");
    ASSERT_EQ(0, file.status);
    void* const channel = file.channel(0, 0);
    EXPECT_EQ(2u, value_count(channel));
    EXPECT_EQ(0, set_channel_data_int32(channel, 1, &value));
    EXPECT_EQ(0, save_file(file.handle));
    EXPECT_EQ(0, create_file_property_int8(file.handle, "p", 1));
    std::int32_t untouched[2] = {8, 9};
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(channel, untouched));
    EXPECT_EQ(8, untouched[0]);
    EXPECT_EQ(TDMS_FILE_HANDLE, save_file(file.handle)) << "the failed read closed the stream";
    EXPECT_EQ(1, get_num_file_property(file.handle)) << "nothing is lost from memory";
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(channel, untouched));
    const std::string third = segment({}) + two_saves.substr(two_saves.size() - 72);
    EXPECT_EQ(two_saves + third, written.scratch.bytes());

    const scratch_file empty("");
    const open_tdms fresh(empty, "a");
    ASSERT_EQ(0, fresh.status);
    void* const first = add_channel(fresh.add_group("g"), "c");
    EXPECT_EQ(0, set_channel_data_int32(first, 1, &value));
    EXPECT_EQ(0, get_channel_data_int32(first, nullptr)) << "no values were in the file";
    EXPECT_EQ(0, save_file(fresh.handle));
}

}  // namespace
