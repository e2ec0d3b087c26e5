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
    int expected;
    const char* what;
    std::string file;
};

TEST(DamagedFiles, Opening)
{
    const std::string huge(8, '\xFF');
    const std::string empty = u32(0);
    const std::string lengths = u64(4) + u64(4) + empty;
    const std::string property = object("/", none, u32(1) + text("p"));
    const std::string c = "/'g'/'c'";
    const std::string no_texts = object(c, string_index(0, 0));
    const int damaged = TDMS_CHANNEL_READ;
    const open_row rows[] = {
        {0, "empty", ""},
        {0, "no objects", segment({})},
        {TDMS_FILE_READ, "stray bytes behind the last segment", segment({}) + "TDSm"},
        {TDMS_FILE_TAG, "as many as a lead-in", segment({}) + std::string(28, 'x')},
        {TDMS_FILE_TAG, "the tag first", "TDSn" + u32(0) + u32(0) + lengths},
        {TDMS_FILE_TOC, "big-endian flag", "TDSm" + u32(0x4E) + u32(0) + lengths},
        {TDMS_FILE_TOC, "interleaved", "TDSm" + u32(0x2E) + u32(4713) + lengths},
        {TDMS_FILE_TOC, "no new object list", "TDSm" + u32(10) + u32(4713) + lengths},
        {TDMS_FILE_VERSION, "version", "TDSm" + u32(14) + u32(4712) + lengths},
        {TDMS_FILE_READ, "no metadata", lead_in(0, 0)},
        {TDMS_FILE_READ, "metadata longer than the file", lead_in(5, 0) + empty},
        {TDMS_FILE_READ, "of 2^64-1 bytes", "TDSm" + u32(14) + u32(4713) + huge + huge + empty},
        {TDMS_FILE_READ, "raw data longer than the file", lead_in(4, 1) + empty},
        {TDMS_FILE_READ, "raw data that leads backwards", lead_in(4, ~0ull - 31) + empty},
        {damaged, "metadata's fault before that of the raw data", lead_in(4, 1) + u32(1)},
        {damaged, "object count", metadata(0xFFFFFFFF, "")},
        {damaged, "path length", metadata(1, u32(0xFFFFFFFF) + "/'g'")},
        {damaged, "index cut", metadata(1, text("/'g'") + "\xFF\xFF")},
        {damaged, "property count", segment({object("/", none, u32(0xFFFFFFFF))})},
        {damaged, "property text length", segment({property + u32(32) + huge})},
        {damaged, "property value cut", segment({property + u32(4) + "1234567"})},
        {0, "property without bytes", segment({property + u32(11)})},
        {damaged, "path of no character", segment({object("", none)})},
        {damaged, "path of one character", segment({object("a", none)})},
        {damaged, "path without a slash", segment({object("abc", none)})},
        {damaged, "group path of two characters", segment({object("/a", none)})},
        {0, "group path of three characters", segment({object("/ab", none)})},
        {damaged, "channel of a group path too short", segment({object("//'c'", none)})},
        {damaged, "no room for a channel's name", segment({object("/'g'/'", none)})},
        {0, "channel with an empty name", segment({object("/'g'/''", none)})},
        {TDMS_INDEX, "index of unknown form", segment({group_g, object(c, u32(24))})},
        {damaged, "dimension", segment({group_g, object(c, fixed_index(3, 1, 2))})},
        {damaged, "another type", segment({one_value, object(c, fixed_index(10, 1))})},
        {damaged, "texts for numbers", segment({one_value, object(c, string_index(1, 5))})},
        {0, "texts of another type", segment({no_texts, object(c, string_index(0, 0, 77))})},
        {damaged, "numbers for texts", segment({no_texts, object(c, fixed_index(3, 0))})},
        {0, "a group's index", segment({object("/'g'", u32(7) + "abc"), one_value}, u32(1))},
        {damaged, "one beyond the metadata", segment({object("/'g'", u32(1000))})},
        {0, "one of one byte", metadata(1, text("/'g'") + u32(1) + std::string(1, '\0'))},
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

constexpr int refused = TDMS_CHANNEL_DATA_READ;
constexpr int failed_lookup = 1;

struct fetch_row {
    int expected;  // a status, or a failed lookup
    const char* what;
    std::string file;
    std::vector<std::int32_t> values = {};
};

// Channel c of group g, wherever it is.
void* channel_c(const open_tdms& file)
{
    for (std::size_t g = 0;; ++g) {
        if (name_of(get_group_name, file.group(g)) != "g") continue;
        for (std::size_t c = 0;; ++c) {
            if (name_of(get_channel_name, file.channel(g, c)) == "c") return file.channel(g, c);
        }
    }
}

// Reads 32-bit integers into an array that knows what was written.
TEST(DamagedFiles, FetchingNumbers)
{
    const std::string c = "/'g'/'c'";
    const std::string b = "/'g'/'b'";
    const std::string same = object(c, as_before);
    const std::string seven = segment({one_value}, u32(7));
    const std::string eight = segment({one_value}, u32(8));
    const std::string huge_text = object(b, string_index(0, ~3ull));
    const std::string wrapping_b = int32_channel(b, (1ull << 62) + 1);  // times 4 is 4
    const std::string wrapping_c = int32_channel(c, (1ull << 62) + 1);
    const std::string no_c = object(c, none);
    const std::string h = object("/'h'", none);
    const std::string one_b = int32_channel(b, 1);
    const std::string two_b = int32_channel(b, 2);
    const std::string b_text = object(b, string_index(1, 5));
    const std::string c_text = object(c, string_index(1, 8, 3));
    const std::string a_x = int32_channel("/'a'/'x'", 1);
    const std::string h_x = int32_channel("/'h'/'x'", 1);
    const std::string unknown = object(b, fixed_index(0x4F, 1));
    const std::string five = object(c, fixed_index(3, 5));
    const std::string two_seven = u32(1) + u32(7);
    const std::string b_same = segment({object(b, as_before), same}, u32(2) + u32(8));
    const fetch_row rows[] = {
        {0, "two segments", seven + eight, {7, 8}},
        {0, "the same index as before", seven + segment({same}, u32(8)), {7, 8}},
        {0, "the same index, never given", segment({same}) + seven, {7}},
        {0, "the first chunk only", segment({one_value}, u32(7) + u32(8)), {7}},
        {TDMS_CHANNEL_DATATYPE, "no values", segment({no_c})},
        {0, "behind values", segment({two_b, one_value}, u32(1) + two_seven), {7}},
        {0, "behind texts", segment({b_text, one_value}, u32(1) + "x" + u32(7)), {7}},
        {0, "behind one as before", segment({one_b, one_value}, two_seven) + b_same, {7, 8}},
        {0,
         "behind the root and groups",
         segment({object("/", none), group_g, one_value}, u32(7)),
         {7}},
        {0, "in front of another group", segment({one_value, h_x}, two_seven), {1}},
        {refused, "behind another group's values", segment({a_x, one_value}, two_seven)},
        {failed_lookup, "with a group between",
         segment({int32_channel(b, 0), h, one_value}, u32(7))},
        {failed_lookup, "behind an unknown type", segment({unknown, one_value}, u32(7))},
        {refused, "beyond the raw data", segment({int32_channel(c, 2)}, u32(7))},
        {refused, "behind too long a block", segment({two_b, one_value}, u32(7))},
        {0, "no block behind too long a block", segment({two_b, no_c}, u32(7)) + eight, {8}},
        {refused, "a product that wraps", segment({wrapping_c}, u32(7))},
        {refused, "a product before it that wraps", segment({wrapping_b, one_value}, two_seven)},
        {refused, "a sum that wraps", segment({huge_text, one_value}, u32(7))},
        {refused, "a count without bytes", seven + segment({five, same}, std::string(20, 'x'))},
        {0, "texts for numbers", segment({c_text}, u32(4) + "abcd"), {4}},
    };
    const scratch_file scratch;
    for (const fetch_row& row : rows) {
        scratch.fill(row.file);
        const open_tdms file(scratch, "r");
        ASSERT_EQ(0, file.status) << row.what;
        void* const channel = channel_c(file);
        std::vector<std::int32_t> values(4, -1);
        int got = failed_lookup;
        const auto thrown =
            thrown_text([&] { got = get_channel_data_int32(channel, values.data()); });
        EXPECT_EQ(row.expected, got) << row.what;
        EXPECT_EQ(row.expected == failed_lookup ? "map::at" : "nothing", thrown) << row.what;
        std::vector<std::int32_t> expected = row.values;
        expected.resize(4, -1);
        EXPECT_EQ(expected, values) << row.what;
    }
}

TEST(DamagedFiles, FetchingTexts)
{
    const std::string c = "/'g'/'c'";
    const auto texts = [&c](std::uint64_t count, const std::string& block) {
        return segment({object(c, string_index(count, block.size()))}, block);
    };
    const std::string as_before_b = segment({object(c, as_before)}, u32(1) + "b");
    const open_row rows[] = {
        {0, "sound", texts(2, u32(1) + u32(3) + "abc")},
        {0, "more bytes than the offsets need", texts(1, u32(1) + "abc")},
        {0, "the same index as before", texts(1, u32(1) + "a") + as_before_b},
        {refused, "falling offsets", texts(2, u32(3) + u32(1) + "abc")},
        {refused, "an offset past the block", texts(2, u32(1) + u32(4) + "abc")},
        {refused, "an offset far past it", texts(1, u32(0xFFFFFFFF) + "abc")},
        {refused, "a table longer than the block", texts(3, u32(1) + u32(1))},
        {refused, "a count that wraps", texts(1ull << 62, "abcd")},
        {refused, "a count without a block", segment({object(c, string_index(1, 0))})},
        {refused, "a size past the raw data", segment({object(c, string_index(1, 9))}, u32(0))},
        {refused, "numbers for texts", segment({object(c, fixed_index(32, 1))}, u32(0))},
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
