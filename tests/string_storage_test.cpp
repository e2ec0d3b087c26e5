// The first interface keeps the strings of all channels in one storage of the process. This is a
// program of one test, so that its first call is the process's first.
#include "support.h"

namespace {

using string_list = std::vector<const char*>;

string_list read_strings(const scratch_file& scratch, std::size_t count)
{
    const open_tdms file(scratch, "r");
    EXPECT_EQ(count, value_count(file.channel(0, 0)));
    string_list read(count, nullptr);
    EXPECT_EQ(0, get_channel_data_string(file.channel(0, 0), read.data()));
    return read;
}

string_list write_and_read(const string_list& strings)
{
    file_of_one_channel written;
    EXPECT_EQ(0, set_channel_data_string(written.channel, strings.size(), strings.data()));
    written.file.save_and_close();
    return read_strings(written.scratch, strings.size());
}

TEST(StringStorage, HandsOutItsFirstStringsAndNeverMovesThem)
{
    const auto first = write_and_read({"x", "yz"});
    EXPECT_STREQ("x", first.at(0));
    EXPECT_STREQ("yz", first.at(1));

    // A later call returns the earliest strings again, and its own only after them.
    const auto second = write_and_read({"p", "q", "r"});
    EXPECT_EQ(first[0], second.at(0));
    EXPECT_EQ(first[1], second.at(1));
    EXPECT_STREQ("p", second.at(2));
    EXPECT_TRUE(write_and_read({}).empty());

    // A channel's count may wrap around to fewer strings than it has; only those are stored.
    const std::string c = "/'g'/'c'";
    const scratch_file wrapping(segment({object(c, string_index(2, 10))}, u32(1) + u32(2) + "st") +
                                segment({object(c, fixed_index(TDMS_TYPE_STRING, ~0ull))}));
    EXPECT_EQ(first[0], read_strings(wrapping, 1).at(0));

    const auto many = write_and_read(string_list(100000, "a string that is not short"));
    EXPECT_EQ(first[0], many.at(0));
    EXPECT_STREQ("s", many.at(5));
    EXPECT_STREQ("a string that is not short", many.at(6));
    EXPECT_STREQ("x", first[0]);
    EXPECT_STREQ("p", second[2]);
}

}  // namespace
