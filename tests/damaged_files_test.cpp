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
    const std::string thrown = thrown_text([&] { status = call(); });
    EXPECT_EQ(status == failed_lookup ? "map::at" : "nothing", thrown);
    return status;
}

TEST(DamagedFiles, Opening)
{
    const scratch_file scratch;
    for (const hostile_file& row : files_to_open()) {
        SCOPED_TRACE(row.what);
        scratch.fill(row.bytes);
        void* file = nullptr;
        EXPECT_EQ(row.expected, status_of([&] { return open_file(scratch.path(), "r", &file); }));
        EXPECT_EQ(row.expected == 0, file != nullptr);
        if (file != nullptr) close_file(&file);
        const int appending = row.expected < 0 ? TDMS_FILE_READ : row.expected;
        EXPECT_EQ(appending, status_of([&] { return open_file(scratch.path(), "a", &file); }));
        if (file != nullptr) close_file(&file);
    }
}

TEST(ForeignFiles, NamesAndGroupsThatWereNeverListed)
{
    const std::string p = u32(1) + text("p");
    const scratch_file scratch;
    scratch.fill(segment({object("/ab", none), int32_channel("/'g'/'a'/'b'", 0),
                          object(path_c, none, p + u32(1) + "\x05")}) +
                 segment({object(path_c, none, p + u32(32) + text("new"))}));
    const open_tdms file(scratch, "r");
    ASSERT_EQ(0, file.status);
    EXPECT_EQ("g", name_of(get_group_name, file.group(0)));
    EXPECT_EQ("", name_of(get_group_name, file.group(1))) << "/ab";
    EXPECT_EQ("a'/'b", name_of(get_channel_name, file.channel(0, 0)));
    EXPECT_EQ(32, get_channel_property_datatype(file.channel(0, 1), "p")) << "the later one counts";
}

// Channel c of group g, wherever it is.
void* channel_c(const open_tdms& file)
{
    for (std::size_t g = 0; g != file.groups().size(); ++g) {
        if (name_of(get_group_name, file.group(g)) != "g") continue;
        for (void* const channel : file.channels(g)) {
            if (name_of(get_channel_name, channel) == "c") return channel;
        }
    }
    return nullptr;
}

// Reads 32-bit integers into an array that knows what was written.
TEST(DamagedFiles, FetchingNumbers)
{
    const scratch_file scratch;
    for (const hostile_file& row : files_of_numbers()) {
        SCOPED_TRACE(row.what);
        scratch.fill(row.bytes);
        const open_tdms file(scratch, "r");
        ASSERT_EQ(0, file.status);
        void* const channel = channel_c(file);
        std::vector<std::int32_t> values(4, -1);
        EXPECT_EQ(row.expected,
                  status_of([&] { return get_channel_data_int32(channel, values.data()); }));
        std::vector<std::int32_t> expected = row.values;
        expected.resize(4, -1);
        EXPECT_EQ(expected, values);
    }
}

TEST(DamagedFiles, FetchingTexts)
{
    const scratch_file scratch;
    for (const hostile_file& row : files_of_texts()) {
        SCOPED_TRACE(row.what);
        scratch.fill(row.bytes);
        const open_tdms file(scratch, "r");
        ASSERT_EQ(0, file.status);
        const char* untouched = "untouched";
        const char* out[2] = {untouched, untouched};
        EXPECT_EQ(row.expected, get_channel_data_string(channel_c(file), out));
        EXPECT_EQ(row.expected == 0, out[0] != untouched);
    }
}

TEST(DamagedFiles, CutAtEveryByte)
{
    const std::string raw = u32(1) + u32(2) + u32(1) + u32(3) + "abc";
    const std::string whole =
        segment({object("/", none, u32(1) + text("p") + u32(32) + text("abc")), group_g,
                 object("/'g'/'t'", fixed_index(68, 1))},
                std::string(16, '\x5')) +
        segment({int32_channel(path_c, 2), object("/'g'/'s'", string_index(2, 11))}, raw) +
        segment({object(path_c, as_before), object("/'g'/'s'", as_before)}, raw);
    const std::vector<std::size_t> ends = segment_offsets(whole);
    const scratch_file scratch;
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        scratch.fill(whole.substr(0, cut));
        bool opened = false;
        with_anything(scratch.path(), "r", [&](void* file) {
            read_anything(file);
            opened = true;
        });
        EXPECT_EQ(std::count(ends.begin(), ends.end(), cut) == 1, opened) << cut;
    }
}

TEST(DamagedFiles, CutWhileItIsOpen)
{
    const scratch_file scratch;
    const std::string whole = segment({int32_channel(path_c, 20000)}, std::string(80000, 'x'));
    for (const std::size_t left : {whole.size() - 1, 60ul, 20ul, 0ul}) {
        scratch.fill(whole);
        const open_tdms file(scratch, "r");
        std::filesystem::resize_file(scratch.path(), left);
        const std::vector<std::int32_t> untouched(20000, -1);
        std::vector<std::int32_t> values = untouched;
        EXPECT_EQ(refused, get_channel_data_int32(channel_c(file), values.data())) << left;
        EXPECT_TRUE(untouched == values) << left;
    }
}

}  // namespace
