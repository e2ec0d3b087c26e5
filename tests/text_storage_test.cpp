// The texts of string channels go into one storage of the process. This is a program of one test,
// so that its first call is the process's first.
#include "support.h"

namespace {

std::vector<const char*> read_texts(const std::vector<std::string>& texts)
{
    const scratch_file scratch;
    {
        std::vector<const char*> values;
        for (const std::string& t : texts) values.push_back(t.c_str());
        open_tdms file(scratch, "w");
        void* const channel = add_channel(file.add_group("g"), "c");
        EXPECT_EQ(0, set_channel_data_string(channel, values.size(), values.data()));
        EXPECT_EQ(0, save_file(file.handle));
    }
    const open_tdms file(scratch, "r");
    std::vector<const char*> read(texts.size(), nullptr);
    EXPECT_EQ(0, get_channel_data_string(file.channel(0, 0), read.data()));
    return read;
}

TEST(TextStorage, HandsOutItsFirstTextsAndNeverMovesThem)
{
    const auto first = read_texts({"x", "yz"});
    EXPECT_STREQ("x", first.at(0));
    EXPECT_STREQ("yz", first.at(1));

    // A later call gives the earliest texts again, and its own from where they stand behind them.
    const auto second = read_texts({"p", "q", "r"});
    EXPECT_EQ(first[0], second.at(0));
    EXPECT_EQ(first[1], second.at(1));
    EXPECT_STREQ("p", second.at(2));

    EXPECT_TRUE(read_texts({}).empty());
    const auto many = read_texts(std::vector<std::string>(100000, "a text that is not short"));
    EXPECT_EQ(first[0], many.at(0));
    EXPECT_STREQ("q", many.at(3));
    EXPECT_STREQ("r", many.at(4));
    EXPECT_STREQ("a text that is not short", many.at(5));
    EXPECT_STREQ("x", first[0]);
    EXPECT_STREQ("p", second[2]);
}

}  // namespace
