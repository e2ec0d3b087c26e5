// Sizes beyond 32 bits, many objects, long names.
#include "support.h"

namespace {

// One segment states 2^32 + 1 values and holds them as a hole in the file. Behind them, in the same
// segment and in a save of the library's own, are values of another channel.
TEST(Limits, BeyondFourGigabytes)
{
    constexpr std::uint64_t count = (1ull << 32) + 1;
    const scratch_file scratch;
    const std::int32_t values[] = {1, 2, 3};
    {
        open_tdms file(scratch, "w");
        void* const group = file.add_group("g");
        EXPECT_EQ(0, set_channel_data_int32(add_channel(group, "c"), 1, &values[0]));
        EXPECT_EQ(0, set_channel_data_uint8(add_channel(group, "big"), 0, nullptr));
        EXPECT_EQ(0, save_file(file.handle));
    }
    const std::string objects =
        u32(2) + object("/'g'/'big'", fixed_index(5, count)) + int32_channel("/'g'/'c'", 1);
    std::ofstream(scratch.path(), std::ios::binary | std::ios::app)
        << lead_in(objects.size(), count + 4) + objects;
    std::filesystem::resize_file(scratch.path(),
                                 std::filesystem::file_size(scratch.path()) + count);
    std::ofstream(scratch.path(), std::ios::binary | std::ios::app) << u32(2);
    {
        open_tdms file(scratch, "a");
        ASSERT_EQ(0, file.status);
        EXPECT_EQ(0, set_channel_data_uint8(file.channel(0, 0), 0, nullptr));
        EXPECT_EQ(0, set_channel_data_int32(file.channel(0, 1), 1, &values[2]));
        EXPECT_EQ(0, save_file(file.handle));
    }
    const open_tdms file(scratch, "r");
    ASSERT_EQ(0, file.status);
    EXPECT_EQ(count, value_count(file.channel(0, 0)));
    EXPECT_EQ((std::vector<std::int32_t>{1, 2, 3}), int32_values(file.channel(0, 1)));
}

TEST(Limits, ManyGroupsAndLongNames)
{
    const std::string name(1 << 20, 'x');
    const scratch_file scratch;
    {
        open_tdms file(scratch, "w");
        for (int i = 0; i != 10000; ++i) file.add_group(std::to_string(i).c_str());
        void* const channel = add_channel(file.add_group(name.c_str()), name.c_str());
        EXPECT_EQ(0, create_channel_property_string(channel, name.c_str(), name.c_str()));
        EXPECT_EQ(0, save_file(file.handle));
    }
    const open_tdms file(scratch, "r");
    ASSERT_EQ(10001, get_num_group(file.handle));
    EXPECT_EQ("9999", name_of(get_group_name, file.group(9999)));
    std::string read(name.size() + 5, '\0');
    EXPECT_EQ(0, get_group_name(file.group(10000), read.data()));
    EXPECT_TRUE(name == read.c_str());
    void* const channel = file.channel(10000, 0);
    EXPECT_EQ(0, get_channel_name(channel, read.data()));
    EXPECT_TRUE(name == read.c_str());
    EXPECT_EQ(0, get_channel_property_string(channel, name.c_str(), read.data(), read.size()));
    EXPECT_TRUE(name == read.c_str());
}

}  // namespace
