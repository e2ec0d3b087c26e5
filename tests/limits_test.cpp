// Sizes beyond 32 bits, and many values at once.
#include "support.h"

namespace {

using Limits = FileOfOneChannel;

// One segment states 2^32 + 1 values and holds them as a hole in the file. After them, in the same
// segment and in a save of the library's own, are values of another channel.
TEST_F(Limits, BeyondFourGigabytes)
{
    constexpr std::uint64_t count = (1ull << 32) + 1;
    const std::int32_t first = 1;
    const std::int32_t last = 3;
    EXPECT_EQ(0, set_channel_data_int32(channel, 1, &first));
    EXPECT_EQ(0, set_channel_data_uint8(add_channel(group, "big"), 0, nullptr));
    file.save_and_close();
    const std::string objects = object("/'g'/'big'", fixed_index(5, count)) + int32s("/'g'/'c'", 1);
    std::ofstream out(scratch.path(), std::ios::binary | std::ios::in | std::ios::ate);
    out << lead_in(4 + objects.size(), count + 4) << u32(2) << objects;
    out.seekp(std::streamoff{count}, std::ios::cur) << u32(2);
    out.close();

    open_tdms appended(scratch, "a");
    ASSERT_EQ(0, appended.status);
    expect_each(0, {set_channel_data_uint8(appended.channel(0, 0), 0, nullptr),
                    set_channel_data_int32(appended.channel(0, 1), 1, &last)});
    appended.save_and_close();
    const open_tdms again(scratch, "r");
    ASSERT_EQ(0, again.status);
    EXPECT_EQ(count, value_count(again.channel(0, 0)));
    std::vector<std::int32_t> read(value_count(again.channel(0, 1)));
    EXPECT_EQ(0, get_channel_data_int32(again.channel(0, 1), read.data()));
    EXPECT_EQ((std::vector<std::int32_t>{1, 2, 3}), read);
}

// Many values staged at once are in memory of another kind.
TEST(LargeStaging, KeepsEveryValue)
{
    std::vector<double> values(700000, 1.5);
    values.back() = 2.5;
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    expect_each(
        0, {tdms_append_double(channel, 3, values.data()),
            tdms_append_double(channel, values.size(), values.data()), tdms_save(file.handle)});
    std::vector<double> read(values.size());
    EXPECT_EQ(0, tdms_read_double(channel, 3, read.size(), read.data()));
    EXPECT_TRUE(values == read);
}

}  // namespace
