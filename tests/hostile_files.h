#pragma once

#include "file_bytes.h"
#include "tdms.h"

// Damaged, hostile and foreign files, and the status that each must give.
struct hostile_file {
    int expected;  // the status of what the table is about, or a failed lookup
    const char* what;
    std::string bytes;
    std::vector<std::int32_t> values = {};  // that channel c of group g has
};

constexpr int failed_lookup = 1;
constexpr int damaged = TDMS_CHANNEL_READ;
constexpr int unreadable = TDMS_CHANNEL_DATA_READ;
constexpr int other_type = TDMS_CHANNEL_DATATYPE;

const std::string huge(8, '\xFF');
const std::string path_c = "/'g'/'c'";
const std::string group_g = object("/'g'", none);
const std::string one_value = int32s(path_c, 1);

// Opening them.
inline std::vector<hostile_file> files_to_open()
{
    const std::string empty = u32(0);
    const std::string lengths = u64(4) + u64(4) + empty;
    const auto property = [](std::uint32_t type, const std::string& value = {}) {
        return segment({object("/", none, property_p(type, value))});
    };
    return {
        {0, "an empty file", ""},
        {TDMS_FILE_TAG, "wrong tag before a wrong TOC", "TDSn" + u32(0) + u32(0) + lengths},
        {TDMS_FILE_TOC, "a big-endian segment", "TDSm" + u32(0x4E) + u32(0) + lengths},
        {TDMS_FILE_TOC, "no new object list", "TDSm" + u32(10) + u32(4713) + lengths},
        {TDMS_FILE_VERSION, "a version other than 4713", "TDSm" + u32(14) + u32(4712) + lengths},
        {TDMS_FILE_READ, "a segment without metadata", lead_in(0, 0)},
        {TDMS_FILE_READ, "a segment of 2^64-1 bytes", lead_in(~0ull, 0) + empty},
        {TDMS_FILE_READ, "raw data that leads backwards", lead_in(4, ~0ull - 31) + empty},
        {damaged, "damaged metadata before missing raw data", lead_in(4, 1) + u32(1)},
        {damaged, "too many objects", metadata(0xFFFFFFFF, "")},
        {damaged, "a path longer than the metadata", metadata(1, u32(0xFFFFFFFF) + "/'g'")},
        {damaged, "metadata that ends in an index", metadata(1, prefixed("/'g'") + "\xFF\xFF")},
        {damaged, "too many properties", segment({object("/", none, u32(0xFFFFFFFF))})},
        {damaged, "a property longer than the metadata", property(32, huge)},
        {0, "a property of a type that has no size", property(11)},
        {damaged, "a path without a slash", segment({object("abc", none)})},
        {damaged, "a path without a leading slash", segment({object("abc/'c/d'", none)})},
        {damaged, "a group's path of two characters", segment({object("/a", none)})},
        {damaged, "a channel without a group's path", segment({object("//'c'", none)})},
        {damaged, "a channel's path without a name", segment({object("/'g'/'", none)})},
        {0, "a channel with an empty name", segment({object("/'g'/''", none)})},
        {TDMS_INDEX, "an index of an unknown form", segment({group_g, object(path_c, u32(24))})},
        {damaged, "two dimensions", segment({group_g, object(path_c, fixed_index(3, 1, 2))})},
        {damaged, "two types", segment({one_value, object(path_c, fixed_index(10, 1))})},
        {damaged, "strings for numbers", segment({one_value, object(path_c, string_index(1, 5))})},
        {0, "a group's own index", segment({object("/'g'", u32(7) + "abc"), one_value}, u32(1))},
        {0, "a group's index as before", segment({object("/'g'", as_before), one_value}, u32(1))},
        {0, "a group's index of one byte",
         metadata(1, prefixed("/'g'") + u32(1) + std::string(1, '\0'))},
        {failed_lookup, "a property of an unknown type", property(0x4F)},
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
    const std::string huge_string = object(b, string_index(0, ~3ull));
    const std::string wrapping = int32s(b, (1ull << 62) + 1);  // times 4 is 4
    const std::string c_string = object(path_c, string_index(1, 8, 3));
    const std::string short_string = object(path_c, string_index(1, 4, 4));
    const std::string no_c = object(path_c, none);
    const std::string h = object("/'h'", none);
    const std::vector<std::int32_t> both{7, 8}, last{8}, one{1}, four{4};
    return {
        {0, "an index as before", seven + segment({same}, u32(8)), both},
        {0, "an index as before that was never given", segment({same}) + seven, {7}},
        {0, "only the first chunk of two is read", segment({one_value}, u32(7) + u32(8)), {7}},
        {other_type, "a channel that never had values", segment({no_c})},
        {0, "after others with an index as before",
         segment({int32s(b, 1), one_value}, two_seven) + b_same, both},
        {0, "before another group's", segment({one_value, int32s("/'h'/'x'", 1)}, two_seven), one},
        {unreadable, "after another group's",
         segment({int32s("/'a'/'x'", 1), one_value}, two_seven)},
        {failed_lookup, "a group between two of its channels",
         segment({int32s(b, 0), h, one_value}, u32(7))},
        {failed_lookup, "values after an unknown type's", segment({unknown, one_value}, u32(7))},
        {unreadable, "too many values", segment({int32s(path_c, 2)}, u32(7))},
        {unreadable, "values after too long a block", segment({int32s(b, 2), one_value}, u32(7))},
        {0, "after too long a block, none", segment({int32s(b, 2), no_c}, u32(7)) + eight, last},
        {unreadable, "after a block whose size wraps", segment({wrapping, one_value}, two_seven)},
        {unreadable, "values after blocks whose sum wraps",
         segment({huge_string, int32s(d, 1), one_value}, u32(7))},
        {unreadable, "as before, without bytes", seven + segment({int32s(path_c, 2), same}, huge)},
        {0, "a string as a number", segment({c_string}, u32(4) + "abcd"), four},
        {unreadable, "too long a table", segment({object(path_c, string_index(3, 8, 3))}, huge)},
        {other_type, "a string as another number", segment({short_string}, u32(0))},
    };
}

// They open. Reading channel c of group g as strings.
inline std::vector<hostile_file> files_of_strings()
{
    const auto strings = [](std::uint64_t count, const std::string& block) {
        return segment({object(path_c, string_index(count, block.size()))}, block);
    };
    const std::string other = string_index(1, 5, 77);
    const std::string as_before_b = segment({object(path_c, as_before)}, u32(1) + "b");
    return {
        {0, "more bytes than the strings need", strings(1, u32(1) + "abc")},
        {0, "an index as before", strings(1, u32(1) + "a") + as_before_b},
        {0, "a later one of another type",
         strings(1, u32(0)) + segment({object(path_c, other)}, u32(1) + "b")},
        {unreadable, "a string that ends before it begins", strings(2, u32(3) + u32(1) + "abc")},
        {unreadable, "a later string that ends too early",
         strings(3, u32(3) + u32(1) + u32(4) + "abcd")},
        {unreadable, "a string that ends after the block", strings(2, u32(1) + u32(4) + "abc")},
        {unreadable, "a table that leaves the segment", strings(3, u32(0)) + segment({group_g})},
        {unreadable, "a table whose size wraps", strings(1ull << 62, "abcd")},
        {unreadable, "strings without a block", segment({object(path_c, string_index(1, 0))})},
        {unreadable, "numbers in a channel of strings",
         segment({object(path_c, fixed_index(32, 1))}, u32(0))},
    };
}
