// The texts of string channels go into one storage of the process. This is a program of one test,
// so that its first call is the process's first. And it has names of its own that the library has,
// too: it must link, and the library must go on using its own.
#include <algorithm>

#include "support.h"

int mtx[64];
char fileHandles[256];
extern "C" int get_num_channel_data(void*, uint64_t*)
{
    std::abort();
}
unsigned int read_uint32(const unsigned char*, bool)
{
    std::abort();
}

namespace {

std::vector<const char*> read_texts(const std::vector<const char*>& texts)
{
    new_file written;
    EXPECT_EQ(0, set_channel_data_string(written.channel, texts.size(), texts.data()));
    written.file.save_and_close();
    const open_tdms file(written.scratch, "r");
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
    const auto many = read_texts(std::vector<const char*>(100000, "a text that is not short"));
    EXPECT_EQ(first[0], many.at(0));
    EXPECT_STREQ("r", many.at(4));
    EXPECT_STREQ("a text that is not short", many.at(5));
    EXPECT_STREQ("x", first[0]);
    EXPECT_STREQ("p", second[2]);

    // The program's own objects were not taken for the library's.
    EXPECT_EQ(64, std::count(std::begin(mtx), std::end(mtx), 0));
    EXPECT_EQ(256, std::count(std::begin(fileHandles), std::end(fileHandles), '\0'));
}

}  // namespace
