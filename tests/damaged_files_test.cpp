// Damaged, hostile and foreign files: each ends in a status at once, and nothing is written.
#include "anything.h"
#include "hostile_files.h"
#include "support.h"

namespace {

// The status that a call gives, or a failed lookup.
template <class Call>
int status_of(Call call)
{
    int status = failed_lookup;
    const std::string thrown = thrown_message([&] { status = call(); });
    EXPECT_EQ(status == failed_lookup ? "map::at" : "nothing", thrown);
    return status;
}

TEST(DamagedFiles, Opening)
{
    for (const hostile_file& row : files_to_open()) {
        SCOPED_TRACE(row.what);
        const scratch_file scratch(row.bytes);
        const int appending = row.expected < 0 ? TDMS_FILE_READ : row.expected;
        EXPECT_EQ(row.expected, status_of([&] { return open_tdms(scratch, "r").status; }));
        EXPECT_EQ(appending, status_of([&] { return open_tdms(scratch, "a").status; }));
    }
}

TEST(ForeignFiles, NamesGroupsThatWereNeverListedAndBools)
{
    const std::string later = object(path_c, fixed_index(33, 4), property_p(32, prefixed("new")));
    const scratch_file scratch(
        segment({object("/ab", none), int32s("/'g'/'a'/'b'", 0),
                 object(path_c, none, property_p(1, "\x05")), int32s("/''/'c'", 0)}) +
        segment({later}, {"\0\1\2\x80", 4}));
    const open_tdms file(scratch, "r");
    ASSERT_EQ(0, file.status);
    EXPECT_EQ("", name_of(get_group_name, file.group(0)));
    EXPECT_EQ("c", name_of(get_channel_name, file.channel(0, 0)));
    EXPECT_EQ("g", name_of(get_group_name, file.group(1)));
    EXPECT_EQ("", name_of(get_group_name, file.group(2))) << "/ab";
    EXPECT_EQ("a'/'b", name_of(get_channel_name, file.channel(1, 0)));
    EXPECT_EQ(32, get_channel_property_datatype(file.channel(1, 1), "p")) << "the later one counts";
    bool values[4] = {};
    EXPECT_EQ(0, get_channel_data_bool(file.channel(1, 1), values));
    EXPECT_EQ(0, std::memcmp("\0\1\1\1", values, 4)) << "every byte but zero is true";
}

// What follows values of a type that has no size cannot be located, and counts as lost.
TEST(ForeignFiles, ChunksAndValuesOfATypeWithoutASize)
{
    const scratch_file scratch(
        segment({int32s("/'g'/'a'", 1), object("/'g'/'b'", fixed_index(11, 1)), one_value},
                u32(7) + std::string(10, 'x') + u32(8)) +
        segment({one_value}, u32(9) + u32(10)));
    const tdms_file file(scratch, "r");
    EXPECT_EQ(std::pair(1ul, 0ul), found_and_lost(file.channel("g", "a")));
    EXPECT_EQ(std::pair(0ul, 1ul), found_and_lost(file.channel("g", "b")));
    EXPECT_EQ(std::pair(1ul, 1ul), found_and_lost(file.channel("g", "c"))) << "of the first chunk";
}

// Values are decoded from the records of the strings, length and all, within the caller's array.
TEST(ForeignFiles, TimestampsThatAreStoredAsStrings)
{
    set_time_zone("UTC");
    const timestamp_fields guard = {1, 2, 3, 4, 5, 6, 7};
    const std::uint64_t epoch = 2082844800;
    const std::string strings = u32(0) + u64(epoch + 60) + u32(0) + u64(epoch + 120);
    for (const std::uint32_t length : {11, 12}) {
        const std::string block = u32(length) + u32(length + 12) + strings;
        const scratch_file scratch(
            segment({object(path_c, string_index(2, block.size(), 68))}, block));
        const open_tdms file(scratch, "r");
        timestamp_fields values[] = {guard, guard, guard, guard};
        const bool enough = length == 12;
        EXPECT_EQ(enough ? 0 : unreadable,
                  get_channel_data_timestamp(file.channel(0, 0), values + 1));
        EXPECT_EQ(enough ? 1 : guard.minute, values[1].minute);
        EXPECT_EQ(enough ? 2 : guard.minute, values[2].minute);
        EXPECT_TRUE(is_same(guard, values[0]) && is_same(guard, values[3]));
        EXPECT_EQ(std::pair(0ul, 2ul), found_and_lost(file.channel(0, 0)));
    }
}

void* channel_c(const open_tdms& file)
{
    void* found = nullptr;
    tdms_find_group(file.handle, "g", &found);
    EXPECT_EQ(0, tdms_find_channel(found, "c", &found));
    return found;
}

// Fetches into an array that knows what was written.
TEST(DamagedFiles, Fetching)
{
    for (const hostile_file& row : files_of_numbers()) {
        SCOPED_TRACE(row.what);
        const scratch_file scratch(row.bytes);
        const open_tdms file(scratch, "r");
        std::vector<std::int32_t> values(4, -1);
        std::vector<std::int32_t> expected = row.values;
        expected.resize(4, -1);
        EXPECT_EQ(row.expected, status_of([&] {
                      return get_channel_data_int32(channel_c(file), values.data());
                  }));
        EXPECT_EQ(expected, values);
        read_anything(file.handle);
    }
    // The second interface requires the type of strings, and touches nothing before all is checked.
    for (const hostile_file& row : files_of_strings()) {
        SCOPED_TRACE(row.what);
        const scratch_file scratch(row.bytes);
        const open_tdms file(scratch, "r");
        const char* out[4] = {};
        char buffer[9] = "########";
        EXPECT_EQ(row.expected, get_channel_data_string(channel_c(file), out));
        EXPECT_EQ(row.expected == 0, out[0] != nullptr);
        const auto there = std::min<std::uint64_t>(found_and_lost(channel_c(file)).first, 3);
        const int status = ::tdms_read_string(channel_c(file), 0, there, buffer, 8, out);
        EXPECT_EQ(there == 0 ? 0 : row.expected, status);
        // Of two strings, the last one by itself.
        const std::uint64_t last = there == 2 ? 1 : 0;
        std::uint64_t size = 0;
        EXPECT_EQ(last == 1 ? row.expected : 0,
                  tdms_get_string_size(channel_c(file), last, last, &size));
        EXPECT_STREQ(row.expected == 0 ? buffer : "########", buffer);
    }
}

}  // namespace
