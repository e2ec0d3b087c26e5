// Damaged, hostile and foreign files: each ends in a status at once, and nothing is written.
#include "anything.h"
#include "core/object_model.h"
#include "hostile_files.h"
#include "sessions.h"
#include "support.h"

namespace {

// The status that a call gives, or a failed lookup.
template <class Call>
int status_of(Call call)
{
    int status = failed_lookup;
    const std::string thrown = thrown_text([&] { status = call(); });
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
    const std::string p = u32(1) + text("p");
    const std::string later = object(path_c, fixed_index(33, 4), p + u32(32) + text("new"));
    const scratch_file scratch(segment({object("/ab", none), int32s("/'g'/'a'/'b'", 0),
                                        object(path_c, none, p + u32(1) + "\x05")}) +
                               segment({later}, {"\0\1\2\x80", 4}));
    const open_tdms file(scratch, "r");
    ASSERT_EQ(0, file.status);
    EXPECT_EQ("g", name_of(get_group_name, file.group(0)));
    EXPECT_EQ("", name_of(get_group_name, file.group(1))) << "/ab";
    EXPECT_EQ("a'/'b", name_of(get_channel_name, file.channel(0, 0)));
    EXPECT_EQ(32, get_channel_property_datatype(file.channel(0, 1), "p")) << "the later one counts";
    bool values[4] = {};
    EXPECT_EQ(0, get_channel_data_bool(file.channel(0, 1), values));
    EXPECT_EQ(0, std::memcmp("\0\1\1\1", values, 4)) << "every byte but zero is true";
}

void* channel_c(const open_tdms& file)
{
    return static_cast<tdms_impl::option*>(file.handle)->groups.find("/'g'")->channels.find(path_c);
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
    for (const hostile_file& row : files_of_texts()) {
        SCOPED_TRACE(row.what);
        const scratch_file scratch(row.bytes);
        const open_tdms file(scratch, "r");
        const char* out[3] = {};
        char buffer[9] = "########";
        EXPECT_EQ(row.expected, get_channel_data_string(channel_c(file), out));
        EXPECT_EQ(row.expected == 0, out[0] != nullptr);
        const auto there = std::min<std::uint64_t>(found_and_lost(channel_c(file)).first, 2);
        const int status = ::tdms_read_string(channel_c(file), 0, there, buffer, 8, out);
        EXPECT_EQ(there == 0 ? 0 : row.expected, status);
        EXPECT_STREQ(row.expected == 0 ? buffer : "########", buffer);
    }
}

TEST(DamagedFiles, CutAtEveryByte)
{
    const scratch_file scratch;
    write_everything(scratch.path(), [](auto function) { EXPECT_EQ(0, function()); });
    const std::string complete = scratch.bytes();
    const std::vector<std::size_t> ends = segment_offsets(complete);
    for (std::size_t cut = 0; cut <= complete.size(); ++cut) {
        SCOPED_TRACE(cut);
        scratch.fill(complete.substr(0, cut));
        const std::size_t intact = *std::prev(std::upper_bound(ends.begin(), ends.end(), cut));
        const int expected = intact == cut ? 0 : TDMS_FILE_READ;
        expect_each(expected, {open_tdms(scratch, "r").status, tdms_file(scratch, "r").status});
        const tdms_file partial(scratch);
        EXPECT_EQ(std::pair(0, cut - intact), std::pair(partial.status, partial.rest));
        if (intact == cut) read_anything(partial.handle);
    }
}

TEST(DamagedFiles, CutWhileItIsOpen)
{
    const std::string whole = segment({int32s(path_c, 20000)}, std::string(80000, 'x'));
    for (const std::size_t left : {whole.size() - 1, 60ul, 20ul, 0ul}) {
        const scratch_file scratch(whole);
        const open_tdms file(scratch, "r");
        std::filesystem::resize_file(scratch.path(), left);
        const std::vector<std::int32_t> untouched(20000, -1);
        std::vector<std::int32_t> values = untouched;
        EXPECT_EQ(refused, get_channel_data_int32(channel_c(file), values.data())) << left;
        EXPECT_TRUE(untouched == values) << left;
    }
}

}  // namespace
