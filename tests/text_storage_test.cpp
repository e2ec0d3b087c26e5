// The texts of string channels go into one storage of the process. This is a program of one test,
// so that its first call is the process's first. And its own names are those that the library has
// within and without: it must link, and the library must go on using its own.
#include <algorithm>

#include "support.h"

int mtx[64];
char fileHandles[256];

class group {
  public:
    virtual ~group() = default;
};
class option {
  public:
    static int open_file() { return 1; }
};

extern "C" int delete_file(const char*)
{
    std::abort();
}
extern "C" int get_num_channel_data(void*, uint64_t*)
{
    std::abort();
}
unsigned int read_uint32(const unsigned char*, bool)
{
    std::abort();
}
int read_leadIn(unsigned char*, unsigned long&, unsigned long&)
{
    std::abort();
}

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

    // The program's own objects were not taken for the library's.
    const group own;
    EXPECT_NE(nullptr, typeid(own).name());
    EXPECT_EQ(1, option::open_file());
    EXPECT_EQ(0, std::count_if(std::begin(mtx), std::end(mtx), [](int word) { return word != 0; }));
    EXPECT_EQ(0, std::count_if(std::begin(fileHandles), std::end(fileHandles),
                               [](char byte) { return byte != 0; }));
}

}  // namespace
