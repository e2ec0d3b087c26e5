// Strings in the caller's memory, read by the second interface.
#include "support.h"

namespace {

TEST(Strings, FillABufferOfExactlyTheSizeAskedFor)
{
    const std::string block = u32(1) + u32(3) + u32(3) + std::string("x\0y", 3);
    const scratch_file scratch(segment({object("/'g'/'c'", string_index(3, block.size()))}, block));
    const tdms_file file(scratch, "r");
    void* const channel = file.channel("g", "c");
    char buffer[6] = "#####";
    const char* strings[4] = {};
    std::uint64_t size = 0;
    EXPECT_EQ(0, tdms_get_string_size(channel, 0, 3, &size));
    EXPECT_EQ(6u, size);
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, tdms_read_string(channel, 0, 3, buffer, 5, strings));
    EXPECT_STREQ("#####", buffer);
    EXPECT_EQ(0, tdms_read_string(channel, 0, 3, buffer, 6, strings));
    EXPECT_EQ(std::string("x\0\0y\0\0", 6), std::string(buffer, 6));
    EXPECT_EQ(2, strings[2] - strings[1] - 1) << "a zero byte is one of them";
    EXPECT_EQ(buffer + 6, strings[3]);
    EXPECT_EQ(0, tdms_read_string(channel, 1, 0, nullptr, 0, strings));
}

// In the buffer, a string moves by as many bytes as there are strings after it, and may overlap the
// place where it was.
TEST(Strings, OfEveryLengthMoveByEveryDistance)
{
    constexpr std::size_t lengths = 71;
    constexpr std::size_t all = 20000;
    std::vector<std::string> given;
    std::vector<const char*> staged;
    for (std::size_t i = 0; i != all; ++i) {
        given.emplace_back(i % lengths, 'a');
        for (std::size_t j = 0; char& c : given.back()) c = static_cast<char>(c + (i + j++) % 25);
    }
    for (const std::string& s : given) staged.push_back(s.c_str());
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    expect_each(0, {tdms_append_string(channel, 100, staged.data()),
                    tdms_append_string(channel, all - 100, &staged[100]), tdms_save(file.handle)});
    for (std::size_t first = 0; first <= lengths; ++first) {
        const std::size_t count = first == lengths ? all - first : lengths;
        std::uint64_t size = 0;
        EXPECT_EQ(0, tdms_get_string_size(channel, first, count, &size));
        std::vector<char> buffer(size);
        std::vector<const char*> read(count + 1);
        EXPECT_EQ(0, tdms_read_string(channel, first, count, buffer.data(), size, read.data()));
        for (std::size_t i = 0; i != count; ++i) ASSERT_EQ(given[first + i], read[i]);
    }
}

}  // namespace
