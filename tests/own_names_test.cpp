// A program may have names of its own that the library has, too: it links, and the library goes on
// using its own.
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

TEST(OwnNames, AreNotTakenForTheLibrarys)
{
    file_of_one_channel written;
    const char* string = "a string";
    EXPECT_EQ(0, set_channel_data_string(written.channel, 1, &string));
    written.file.save_and_close();
    const open_tdms file(written.scratch, "r");
    EXPECT_EQ(0, get_channel_data_string(file.channel(0, 0), &string));
    EXPECT_STREQ("a string", string);
    EXPECT_EQ(64, std::count(std::begin(mtx), std::end(mtx), 0));
    EXPECT_EQ(256, std::count(std::begin(fileHandles), std::end(fileHandles), '\0'));
}

}  // namespace
