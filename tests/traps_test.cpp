// What saving by the first interface loses, and the second one keeps.
#include "support.h"

namespace {

constexpr const char* letters[] = {"a", "b", "c", "d", "e", "f", "g"};

void write_letters(const scratch_file& scratch)
{
    tdms_file file(scratch, "w");
    for (std::int32_t i = 0; i != 7; ++i) {
        const std::int32_t values[] = {i, 10 * i};
        EXPECT_EQ(0, tdms_append_int32(file.channel("a", letters[i]), 2, values));
    }
    file.save_and_close();
}

// How many of the channels give back what they were given, and nothing else.
std::size_t right_by_first_functions(const scratch_file& scratch)
{
    const open_tdms file(scratch, "r");
    std::size_t right = 0;
    for (void* const group : groups_of(file.handle)) {
        for (std::int32_t i = 0; void* const channel : channels_of(group)) {
            std::vector<std::int32_t> values(value_count(channel), -1);
            thrown_message([&] { get_channel_data_int32(channel, values.data()); });
            right += values[0] == i && values[1] == 10 * i;
            ++i;
        }
    }
    return right;
}

// Two values for one of seven channels: the others state counts without values. With a count of its
// own, the channel's values are found; with that of the others, nobody can know whose they are.
TEST(Traps, AppendingToSomeChannels)
{
    for (const std::uint64_t added : {1ul, 2ul}) {
        const scratch_file scratch;
        write_letters(scratch);
        EXPECT_EQ(7u, right_by_first_functions(scratch));
        const std::string intact = scratch.bytes();
        const std::int32_t values[] = {70, 71};
        open_tdms old(scratch, "a");
        EXPECT_EQ(0, set_channel_data_int32(old.channel(0, 3), added, values));
        old.save_and_close();
        EXPECT_GT(7u, right_by_first_functions(scratch));
        const tdms_file again(scratch, "r");
        for (const char* const letter : letters) {
            const std::uint64_t own = *letter == 'd' ? added : 2;
            const bool found = *letter == 'd' && added == 1;
            EXPECT_EQ(std::pair(found ? 2 + added : 2, found ? 0 : own),
                      found_and_lost(again.channel("a", letter)));
        }

        scratch.fill(intact);
        tdms_file appended(scratch, "a");
        EXPECT_EQ(0, tdms_append_int32(appended.channel("a", "d"), added, values));
        appended.save_and_close();
        EXPECT_EQ(7u, right_by_first_functions(scratch));
        std::int32_t last = 0;
        EXPECT_EQ(0,
                  tdms_read_int32(tdms_file(scratch, "r").channel("a", "d"), 1 + added, 1, &last));
        EXPECT_EQ(values[added - 1], last);
    }
}

}  // namespace
