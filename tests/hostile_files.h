#pragma once

#include "file_bytes.h"
#include "tdms.h"

// Damaged, hostile and foreign files, and what becomes of each.
struct hostile_file {
    int expected;  // the status of what the table is about, or a failed lookup
    const char* what;
    std::string bytes;
    std::vector<std::int32_t> values = {};  // that channel c of group g has
};

constexpr int failed_lookup = 1;
constexpr int damaged = TDMS_CHANNEL_READ;
constexpr int refused = TDMS_CHANNEL_DATA_READ;

const std::string huge(8, '\xFF');
const std::string path_c = "/'g'/'c'";
const std::string group_g = object("/'g'", none);
const std::string one_value = int32s(path_c, 1);

// Opening them.
inline std::vector<hostile_file> files_to_open()
{
    const std::string empty = u32(0);
    const std::string lengths = u64(4) + u64(4) + empty;
    const std::string property = object("/", none, u32(1) + text("p"));
    return {
        {0, "empty", ""},
        {TDMS_FILE_TAG, "the tag first", "TDSn" + u32(0) + u32(0) + lengths},
        {TDMS_FILE_TOC, "big-endian flag", "TDSm" + u32(0x4E) + u32(0) + lengths},
        {TDMS_FILE_TOC, "no new object list", "TDSm" + u32(10) + u32(4713) + lengths},
        {TDMS_FILE_VERSION, "version", "TDSm" + u32(14) + u32(4712) + lengths},
        {TDMS_FILE_READ, "no metadata", lead_in(0, 0)},
        {TDMS_FILE_READ, "of 2^64-1 bytes", "TDSm" + u32(14) + u32(4713) + huge + huge + empty},
        {TDMS_FILE_READ, "raw data that leads backwards", lead_in(4, ~0ull - 31) + empty},
        {damaged, "metadata's fault before that of the raw data", lead_in(4, 1) + u32(1)},
        {damaged, "object count", metadata(0xFFFFFFFF, "")},
        {damaged, "path length", metadata(1, u32(0xFFFFFFFF) + "/'g'")},
        {damaged, "index cut", metadata(1, text("/'g'") + "\xFF\xFF")},
        {damaged, "property count", segment({object("/", none, u32(0xFFFFFFFF))})},
        {damaged, "property text length", segment({property + u32(32) + huge})},
        {0, "property without bytes", segment({property + u32(11)})},
        {damaged, "path without a slash", segment({object("abc", none)})},
        {damaged, "no slash in front", segment({object("abc/'c/d'", none)})},
        {damaged, "group path of two characters", segment({object("/a", none)})},
        {damaged, "channel of a group path too short", segment({object("//'c'", none)})},
        {damaged, "no room for a channel's name", segment({object("/'g'/'", none)})},
        {0, "channel with an empty name", segment({object("/'g'/''", none)})},
        {TDMS_INDEX, "index of unknown form", segment({group_g, object(path_c, u32(24))})},
        {damaged, "dimension", segment({group_g, object(path_c, fixed_index(3, 1, 2))})},
        {damaged, "another type", segment({one_value, object(path_c, fixed_index(10, 1))})},
        {damaged, "texts for numbers", segment({one_value, object(path_c, string_index(1, 5))})},
        {0, "a group's index", segment({object("/'g'", u32(7) + "abc"), one_value}, u32(1))},
        {0, "one as before", segment({object("/'g'", as_before), one_value}, u32(1))},
        {0, "one of one byte", metadata(1, text("/'g'") + u32(1) + std::string(1, '\0'))},
        {failed_lookup, "property of an unknown type", segment({property + u32(0x4F)})},
    };
}

// They open. Reading channel c of group g as 32-bit integers.
inline std::vector<hostile_file> files_of_numbers()
{
    const std::string b = "/'g'/'b'";
    const std::string d = "/'g'/'d'";
    const std::string same = object(path_c, as_before);
    const std::string seven = segment({one_value}, u32(7));
    const std::string eight = segment({one_value}, u32(8));
    const std::string two_seven = u32(1) + u32(7);
    const std::string b_same = segment({object(b, as_before), same}, u32(2) + u32(8));
    const std::string unknown = object(b, fixed_index(0x4F, 1));
    const std::string huge_text = object(b, string_index(0, ~3ull));
    const std::string wrapping = int32s(b, (1ull << 62) + 1);  // times 4 is 4
    const std::string c_text = object(path_c, string_index(1, 8, 3));
    const std::string short_text = object(path_c, string_index(1, 4, 4));
    const std::string no_c = object(path_c, none);
    const std::string h = object("/'h'", none);
    return {
        {0, "the same index as before", seven + segment({same}, u32(8)), {7, 8}},
        {0, "the same index, never given", segment({same}) + seven, {7}},
        {0, "the first chunk only", segment({one_value}, u32(7) + u32(8)), {7}},
        {TDMS_CHANNEL_DATATYPE, "no values", segment({no_c})},
        {0, "behind one as before", segment({int32s(b, 1), one_value}, two_seven) + b_same, {7, 8}},
        {0, "before another group", segment({one_value, int32s("/'h'/'x'", 1)}, two_seven), {1}},
        {refused, "behind one's values", segment({int32s("/'a'/'x'", 1), one_value}, two_seven)},
        {failed_lookup, "with a group between", segment({int32s(b, 0), h, one_value}, u32(7))},
        {failed_lookup, "behind an unknown type", segment({unknown, one_value}, u32(7))},
        {refused, "beyond the raw data", segment({int32s(path_c, 2)}, u32(7))},
        {refused, "behind too long a block", segment({int32s(b, 2), one_value}, u32(7))},
        {0, "no block behind too long a block", segment({int32s(b, 2), no_c}, u32(7)) + eight, {8}},
        {refused, "behind a product that wraps", segment({wrapping, one_value}, two_seven)},
        {refused, "behind a sum that wraps", segment({huge_text, int32s(d, 1), one_value}, u32(7))},
        {refused, "a count without bytes", seven + segment({int32s(path_c, 2), same}, huge)},
        {0, "texts for numbers", segment({c_text}, u32(4) + "abcd"), {4}},
        {refused, "too long a table", segment({object(path_c, string_index(3, 8, 3))}, huge)},
        {TDMS_CHANNEL_DATATYPE, "a text below a number", segment({short_text}, u32(0))},
    };
}

// They open. Reading channel c of group g as texts.
inline std::vector<hostile_file> files_of_texts()
{
    const auto texts = [](std::uint64_t count, const std::string& block) {
        return segment({object(path_c, string_index(count, block.size()))}, block);
    };
    const std::string other = string_index(1, 5, 77);
    const std::string as_before_b = segment({object(path_c, as_before)}, u32(1) + "b");
    return {
        {0, "more bytes than the offsets need", texts(1, u32(1) + "abc")},
        {0, "the same index as before", texts(1, u32(1) + "a") + as_before_b},
        {0, "of another type", texts(1, u32(0)) + segment({object(path_c, other)}, u32(1) + "b")},
        {refused, "falling offsets", texts(2, u32(3) + u32(1) + "abc")},
        {refused, "an offset past the block", texts(2, u32(1) + u32(4) + "abc")},
        {refused, "a count that wraps", texts(1ull << 62, "abcd")},
        {refused, "a count without a block", segment({object(path_c, string_index(1, 0))})},
        {refused, "numbers for texts", segment({object(path_c, fixed_index(32, 1))}, u32(0))},
    };
}
