// Damaged, hostile and foreign files: each ends in a status at once, and nothing is written.
#include <sys/resource.h>

#include <functional>

#include "support.h"

namespace {

const std::string group_g = object("/'g'", none);
const std::string one_value = object("/'g'/'c'", fixed_index(3, 1));

std::string int32_channel(const std::string& path, std::uint64_t count)
{
    return object(path, fixed_index(3, count));
}

// One segment whose metadata is these bytes after the object count.
std::string metadata(std::uint32_t objects, const std::string& bytes)
{
    return lead_in(4 + bytes.size(), 0) + u32(objects) + bytes;
}

struct open_row {
    const char* what;
    std::string file;
    int expected;
};

TEST(DamagedFiles, Opening)
{
    const std::string huge(8, '\xFF');
    const std::string body = u32(0);
    const std::string property = object("/", none, u32(1) + text("p"));
    const open_row rows[] = {
        {"empty", "", 0},
        {"no objects", segment({}), 0},
        {"stray bytes behind the last segment", segment({}) + "TDSm", TDMS_FILE_READ},
        {"stray lead-in length behind it", segment({}) + std::string(28, 'x'), TDMS_FILE_TAG},
        {"tag first of all faults", "TDSn" + u32(0) + u32(0) + u64(0) + u64(0), TDMS_FILE_TAG},
        {"big-endian flag", "TDSm" + u32(0x4E) + u32(0) + u64(4) + u64(4) + body, TDMS_FILE_TOC},
        {"interleaved", "TDSm" + u32(0x2E) + u32(4713) + u64(4) + u64(4) + body, TDMS_FILE_TOC},
        {"no new object list", "TDSm" + u32(10) + u32(4713) + u64(4) + u64(4) + body,
         TDMS_FILE_TOC},
        {"version", "TDSm" + u32(14) + u32(4712) + u64(4) + u64(4) + body, TDMS_FILE_VERSION},
        {"no metadata", lead_in(0, 0), TDMS_FILE_READ},
        {"metadata longer than the file", lead_in(5, 0) + body, TDMS_FILE_READ},
        {"metadata of 2^64-1 bytes", "TDSm" + u32(14) + u32(4713) + huge + huge + body,
         TDMS_FILE_READ},
        {"raw data longer than the file", lead_in(4, 1) + body, TDMS_FILE_READ},
        {"raw data that would lead backwards", lead_in(4, ~std::uint64_t{0} - 31) + body,
         TDMS_FILE_READ},
        {"metadata's fault before that of the raw data", lead_in(4, 1) + u32(1), TDMS_CHANNEL_READ},
        {"object count", metadata(0xFFFFFFFF, ""), TDMS_CHANNEL_READ},
        {"path length", metadata(1, u32(0xFFFFFFFF) + "/'g'"), TDMS_CHANNEL_READ},
        {"index cut", metadata(1, text("/'g'") + "\xFF\xFF"), TDMS_CHANNEL_READ},
        {"property count", segment({object("/", none, u32(0xFFFFFFFF))}), TDMS_CHANNEL_READ},
        {"property text length", segment({property + u32(32) + huge}), TDMS_CHANNEL_READ},
        {"property value cut", segment({property + u32(4) + "1234567"}), TDMS_CHANNEL_READ},
        {"property without bytes", segment({property + u32(11)}), 0},
        {"path of no character", segment({object("", none)}), TDMS_CHANNEL_READ},
        {"path of one character", segment({object("a", none)}), TDMS_CHANNEL_READ},
        {"path without a slash", segment({object("abc", none)}), TDMS_CHANNEL_READ},
        {"group path of two characters", segment({object("/a", none)}), TDMS_CHANNEL_READ},
        {"group path of three characters", segment({object("/ab", none)}), 0},
        {"channel of a group path too short", segment({object("//'c'", none)}), TDMS_CHANNEL_READ},
        {"channel path without room for a name", segment({object("/'g'/'", none)}),
         TDMS_CHANNEL_READ},
        {"channel with an empty name", segment({object("/'g'/''", none)}), 0},
        {"index of unknown form", segment({group_g, object("/'g'/'c'", u32(24))}), TDMS_INDEX},
        {"dimension", segment({group_g, object("/'g'/'c'", fixed_index(3, 1, 2))}),
         TDMS_CHANNEL_READ},
        {"another type", segment({one_value, object("/'g'/'c'", fixed_index(10, 1))}),
         TDMS_CHANNEL_READ},
        {"texts in a channel of numbers",
         segment({one_value, object("/'g'/'c'", string_index(1, 5))}), TDMS_CHANNEL_READ},
        {"texts whose index states another type",
         segment(
             {object("/'g'/'c'", string_index(0, 0)), object("/'g'/'c'", string_index(0, 0, 77))}),
         0},
        {"numbers in a channel of texts",
         segment({object("/'g'/'c'", string_index(0, 0)), object("/'g'/'c'", fixed_index(3, 0))}),
         TDMS_CHANNEL_READ},
        {"a group's index is passed over",
         segment({object("/'g'", u32(7) + "abc"), one_value}, u32(1)), 0},
        {"a group's index beyond the metadata", segment({object("/'g'", u32(1000))}),
         TDMS_CHANNEL_READ},
        {"a group's index of one byte", metadata(1, text("/'g'") + u32(1) + std::string(1, '\0')),
         0},
    };
    const scratch_file scratch;
    for (const open_row& row : rows) {
        scratch.fill(row.file);
        void* file = nullptr;
        EXPECT_EQ(row.expected, open_file(scratch.path(), "r", &file)) << row.what;
        EXPECT_EQ(row.expected == 0, file != nullptr) << row.what;
        if (file != nullptr) close_file(&file);
        const open_tdms appended(scratch, "a");
        EXPECT_EQ(row.expected == 0 ? 0 : TDMS_FILE_READ, appended.status) << row.what;
    }
    scratch.fill(segment({property + u32(0x4F)}));
    void* file = nullptr;
    EXPECT_EQ("map::at", thrown_text([&] { open_file(scratch.path(), "r", &file); }));
    EXPECT_EQ(nullptr, file);
    scratch.fill("");
    EXPECT_EQ(0, open_file(scratch.path(), "r", &file)) << "the registry is not left locked";
    EXPECT_EQ(0, close_file(&file));
}

TEST(ForeignFiles, NamesAndGroupsThatWereNeverListed)
{
    const scratch_file scratch;
    scratch.fill(segment({object("/ab", none), int32_channel("/'g'/'a'/'b'", 0),
                          object("/'g'/'c'", none, u32(1) + text("p") + u32(1) + "\x05")}) +
                 segment({object("/'g'/'c'", none, u32(1) + text("p") + u32(32) + text("new"))}));
    const open_tdms file(scratch, "r");
    ASSERT_EQ(0, file.status);
    ASSERT_EQ(2, get_num_group(file.handle));
    EXPECT_EQ("g", name_of(get_group_name, file.group(0)));
    EXPECT_EQ("", name_of(get_group_name, file.group(1))) << "/ab";
    ASSERT_EQ(2, get_num_channel(file.group(0)));
    EXPECT_EQ("a'/'b", name_of(get_channel_name, file.channel(0, 0)));
    EXPECT_EQ(32, get_channel_property_datatype(file.channel(0, 1), "p")) << "the later one counts";
}

struct fetch_row {
    const char* what;
    std::string file;
    int expected;  // a status, or 1 for a failed lookup
    std::vector<std::int32_t> values;
};

// Reads channel 'c' of group 'g' as 32-bit integers from an array that knows what was written.
TEST(DamagedFiles, FetchingNumbers)
{
    const std::string c = "/'g'/'c'";
    const std::string b = "/'g'/'b'";
    const std::string same = object(c, as_before);
    const std::uint64_t wraps = (std::uint64_t{1} << 62) + 1;  // times 4 is 4
    const int failed_lookup = 1;
    const fetch_row rows[] = {
        {"two segments", segment({one_value}, u32(7)) + segment({one_value}, u32(8)), 0, {7, 8}},
        {"the same index as before",
         segment({one_value}, u32(7)) + segment({same}, u32(8)),
         0,
         {7, 8}},
        {"the first chunk only", segment({one_value}, u32(7) + u32(8)), 0, {7}},
        {"no values", segment({object(c, none)}), TDMS_CHANNEL_DATATYPE, {}},
        {"behind another channel",
         segment({int32_channel(b, 2), one_value}, u32(1) + u32(2) + u32(7)),
         0,
         {7}},
        {"behind texts",
         segment({object(b, string_index(1, 5)), one_value}, u32(1) + "x" + u32(7)),
         0,
         {7}},
        {"behind an index as before",
         segment({int32_channel(b, 1), one_value}, u32(1) + u32(7)) +
             segment({object(b, as_before), same}, u32(2) + u32(8)),
         0,
         {7, 8}},
        {"block beyond the raw data",
         segment({int32_channel(c, 2)}, u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"block behind too long a block",
         segment({int32_channel(b, 2), one_value}, u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"no block behind too long a block",
         segment({int32_channel(b, 2), object(c, none)}, u32(7)) + segment({one_value}, u32(8)),
         0,
         {8}},
        {"a product that wraps",
         segment({int32_channel(c, wraps)}, u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"a product before it that wraps",
         segment({int32_channel(b, wraps), one_value}, u32(1) + u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"a sum that wraps",
         segment({object(b, string_index(0, ~std::uint64_t{3})), one_value,
                  int32_channel("/'g'/'d'", 0)},
                 u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"the same index, never given", segment({same}) + segment({one_value}, u32(7)), 0, {7}},
        {"count without bytes",
         segment({one_value}, u32(7)) +
             segment({object(c, fixed_index(3, 5)), same}, std::string(20, 'x')),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"root and groups before it",
         segment({object("/", none), group_g, one_value}, u32(7)),
         0,
         {7}},
        {"values of another group before it",
         segment({int32_channel("/'a'/'x'", 1), one_value}, u32(1) + u32(7)),
         TDMS_CHANNEL_DATA_READ,
         {}},
        {"another group behind it",
         segment({one_value, int32_channel("/'h'/'x'", 1)}, u32(7) + u32(1)),
         0,
         {7}},
        {"another group behind a channel of the group",
         segment({int32_channel(b, 0), object("/'h'", none), one_value}, u32(7)),
         failed_lookup,
         {}},
        {"a type that is not known before it",
         segment({object(b, fixed_index(0x4F, 1)), one_value}, u32(7)),
         failed_lookup,
         {}},
        {"texts in a channel of numbers",
         segment({object(c, string_index(1, 8, 3))}, u32(4) + "abcd"),
         0,
         {4}},
    };
    const scratch_file scratch;
    for (const fetch_row& row : rows) {
        scratch.fill(row.file);
        const open_tdms file(scratch, "r");
        ASSERT_EQ(0, file.status) << row.what;
        std::vector<std::int32_t> values(4, -1);
        std::vector<std::int32_t> expected = row.values;
        expected.resize(4, -1);
        const std::size_t group = std::strcmp(row.what, "values of another group before it") == 0;
        const std::size_t last = static_cast<std::size_t>(get_num_channel(file.group(group))) - 1;
        void* channel = file.channel(group, last);
        if (name_of(get_channel_name, channel) != "c") channel = file.channel(group, last - 1);
        if (row.expected == failed_lookup) {
            EXPECT_EQ("map::at",
                      thrown_text([&] { get_channel_data_int32(channel, values.data()); }))
                << row.what;
        } else {
            EXPECT_EQ(row.expected, get_channel_data_int32(channel, values.data())) << row.what;
        }
        EXPECT_EQ(expected, values) << row.what;
    }
}

TEST(DamagedFiles, FetchingTexts)
{
    const std::string c = "/'g'/'c'";
    const auto texts = [&c](std::uint64_t count, const std::string& block) {
        return segment({object(c, string_index(count, block.size()))}, block);
    };
    const open_row rows[] = {
        {"sound", texts(2, u32(1) + u32(3) + "abc"), 0},
        {"more bytes than the offsets need", texts(1, u32(1) + "abc"), 0},
        {"falling offsets", texts(2, u32(3) + u32(1) + "abc"), TDMS_CHANNEL_DATA_READ},
        {"an offset past the block", texts(2, u32(1) + u32(4) + "abc"), TDMS_CHANNEL_DATA_READ},
        {"an offset far past it", texts(1, u32(0xFFFFFFFF) + "abc"), TDMS_CHANNEL_DATA_READ},
        {"a table longer than the block", texts(3, u32(1) + u32(1)), TDMS_CHANNEL_DATA_READ},
        {"a count that wraps", texts(std::uint64_t{1} << 62, "abcd"), TDMS_CHANNEL_DATA_READ},
        {"a count without a block", segment({object(c, string_index(1, 0))}),
         TDMS_CHANNEL_DATA_READ},
        {"a size past the raw data", segment({object(c, string_index(1, 9))}, u32(0)),
         TDMS_CHANNEL_DATA_READ},
        {"numbers claimed as texts", segment({object(c, fixed_index(32, 1))}, u32(0)),
         TDMS_CHANNEL_DATA_READ},
        {"the same index as before",
         texts(1, u32(1) + "a") + segment({object(c, as_before)}, u32(1) + "b"), 0},
    };
    const scratch_file scratch;
    for (const open_row& row : rows) {
        scratch.fill(row.file);
        const open_tdms file(scratch, "r");
        ASSERT_EQ(0, file.status) << row.what;
        const char* untouched = "untouched";
        const char* out[2] = {untouched, untouched};
        EXPECT_EQ(row.expected, get_channel_data_string(file.channel(0, 0), out)) << row.what;
        EXPECT_EQ(row.expected == 0, out[0] != untouched) << row.what;
    }
}

// Whatever can be done with a file that may be anything: open it, walk it, read all of it.
void exercise(const scratch_file& scratch)
{
    const open_tdms file(scratch, "r");
    if (file.status != 0) return;
    std::vector<void*> groups(static_cast<std::size_t>(get_num_group(file.handle)));
    get_group(file.handle, groups.data());
    for (void* group : groups) {
        std::vector<void*> channels(static_cast<std::size_t>(get_num_channel(group)));
        get_channel(group, channels.data());
        for (void* channel : channels) {
            std::uint64_t count = 0;
            get_num_channel_data(channel, &count);
            // The array is what a caller would size; a count beyond the file must not be used.
            if (count > 4096) count = 0;
            std::vector<timestamp_fields> values(count);
            std::vector<const char*> texts(count);
            if (get_channel_datatype(channel) == TDMS_TYPE_INT32) {
                get_channel_data_int32(channel, count == 0 ? nullptr : &values[0].year);
            }
            get_channel_data_timestamp(channel, values.data());
            get_channel_data_string(channel, texts.data());
        }
    }
}

// A file with every kind of object, and the same file after each of the damages below.
TEST(DamagedFiles, EveryByteCutAndEveryNumberAtItsExtremes)
{
    const std::string properties =
        u32(2) + text("p") + u32(32) + text("abc") + text("q") + u32(68) + std::string(16, '\x7');
    const std::string whole =
        segment({object("/", none, properties), group_g, object("/'g'/'t'", fixed_index(68, 1))},
                std::string(16, '\x5')) +
        segment({int32_channel("/'g'/'c'", 2), object("/'g'/'s'", string_index(2, 11))},
                u32(1) + u32(2) + u32(1) + u32(3) + "abc") +
        segment({object("/'g'/'c'", as_before), object("/'g'/'s'", as_before)},
                u32(1) + u32(2) + u32(1) + u32(3) + "abc");
    // Damage must not make the library ask for memory that the file cannot fill. The address
    // sanitizer keeps freed memory, and is told to refuse large requests instead.
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    const scratch_file scratch;
    for (std::size_t cut = 0; cut != whole.size(); ++cut) {
        scratch.fill(whole.substr(0, cut));
        exercise(scratch);
        const open_tdms file(scratch, "r");
        EXPECT_EQ(cut == 0,
                  file.status == 0 && cut != whole.find("TDSm", 1) && cut != whole.rfind("TDSm"))
            << cut;
    }
    const std::uint64_t extremes[] = {0,
                                      1,
                                      3,
                                      0x7F,
                                      0xFF,
                                      0x7FFFFFFF,
                                      0x80000000,
                                      0xFFFFFFFF,
                                      std::uint64_t{1} << 62,
                                      ~std::uint64_t{0}};
    for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
        for (const std::uint64_t extreme : extremes) {
            for (const std::size_t width : {1u, 4u, 8u}) {
                if (at + width > whole.size()) continue;
                std::string damaged = whole;
                damaged.replace(at, width, u64(extreme).substr(0, width));
                scratch.fill(damaged);
                thrown_text([&] { exercise(scratch); });
            }
        }
    }
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 20 * 1024) << "KiB of memory";
#endif
}

// The file is cut while it is open.
TEST(DamagedFiles, AFileThatShrinks)
{
    const scratch_file scratch;
    const std::string whole = segment({int32_channel("/'g'/'c'", 20000)}, std::string(80000, 'x'));
    for (const std::size_t left :
         {whole.size() - 1, std::size_t{60}, std::size_t{20}, std::size_t{0}}) {
        scratch.fill(whole);
        open_tdms file(scratch, "r");
        void* const channel = file.channel(0, 0);
        std::filesystem::resize_file(scratch.path(), left);
        std::vector<std::int32_t> values(20000, -1);
        EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(channel, values.data())) << left;
        EXPECT_EQ(std::vector<std::int32_t>(20000, -1), values) << left;
        file.close();
    }
}

}  // namespace
