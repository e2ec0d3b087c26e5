// Metadata that repeats is not parsed again. Whatever byte of one segment differs from those before
// it, a file reads as it does when every segment is parsed, which those with a property always are.
#include "anything.h"
#include "support.h"

namespace {

const std::string property = property_p(3, u32(7));

struct kind {
    std::vector<std::string> objects;  // after the file
    std::string raw;
};
const std::string strings = object("/'g'/'b'", string_index(2, 11));
const std::string string_block = u32(1) + u32(3) + "xyz";
const kind kinds[] = {
    {{int32s("/'g'/'a'", 2), strings, object("/'h'", none), object("/'h'/'c'", fixed_index(10, 1))},
     u32(1) + u32(2) + string_block + u64(4)},
    {{object("/'g'/'a'", as_before), object("/'g'/'b'", none),
      object("/'h'/'c'", fixed_index(10, 3))},
     u32(5) + u32(6) + u64(7) + u64(8) + u64(9)},
    {{int32s("/'g'/'a'", 2), strings}, u32(1) + u32(2) + string_block},
    {{int32s("/'g'/'a'", 1), strings}, u32(1) + string_block},
    {{int32s("/'g'/'a'", 2), strings}, string_block},  // a count repeated, but not staged
    {{object("/'g'/'a'", as_before), int32s("/'g'/'a'", 3), int32s("/'g'/'a'", 1)}, u64(1)}};

// Of all metadata, the byte `at` after the entry of the file, in one segment only.
struct change {
    std::size_t segment, at;
    char bits;
};

std::string file_bytes(const std::string& file_properties, change changed)
{
    std::string file;
    const int sequence[] = {0, 1, 0, 0, 1, 0, 0, 1, 1, 0, 2, 3, 2, 4, 5, 5, 5, 5, 2, 5, 5, 5, 5};
    for (std::size_t i = 0; i != std::size(sequence); ++i) {
        const kind& of = kinds[sequence[i]];
        std::vector<std::string> objects = of.objects;
        objects.insert(objects.begin(), object("/", none, file_properties));
        std::string bytes = segment(objects, of.raw);
        const std::size_t begin = 28 + 4 + objects[0].size();
        if (i == changed.segment && begin + changed.at < bytes.size() - of.raw.size()) {
            bytes[begin + changed.at] = static_cast<char>(bytes[begin + changed.at] ^ changed.bits);
        }
        bytes.back() = static_cast<char>(i);  // so that no block is like another
        file += bytes;
    }
    return file;
}

// The first values of a channel as their bytes, and the status; strings are not the channel's own.
template <class Element, class Read>
std::string values(std::uint64_t count, Read read)
{
    typename Element::value array[64] = {};
    const int status = read(array, std::min<std::uint64_t>(count, std::size(array)));
    std::string result = std::to_string(count) + ":" + std::to_string(status) + " ";
    if (status == TDMS_OK && Element::code != TDMS_TYPE_STRING) {
        result.append(reinterpret_cast<const char*>(array), sizeof array);
    }
    return result;
}

std::string all_that_can_be_read(const scratch_file& scratch, decltype(open_file)* open)
{
    std::string found;
    file_handle file;
    found +=
        thrown_message([&] { found += std::to_string(open(scratch.path(), "r", &file.handle)); });
    if (file.handle == nullptr) return found;
    for (void* const group : groups_of(file.handle)) {
        for (void* const channel : channels_of(group)) {
            found += name_of(get_channel_name, channel);
            with_element(get_channel_datatype(channel), [&]<class Element>(Element) {
                const auto [there, lost] = found_and_lost(channel);
                found += values<Element>(there, [&](auto* array, auto first) {
                    return Element::read(channel, 0, first, array);
                });
                found += std::to_string(lost) + " ";
                const std::uint64_t count = value_count(channel);
                const auto get = [&](auto* array, std::uint64_t) {
                    return count > 64 ? 0 : Element::get(channel, array);
                };
                found += thrown_message([&] { found += values<Element>(count, get); });
            });
        }
    }
    return found;
}

TEST(RepeatedMetadata, ReadsAsParsed)
{
    set_time_zone("UTC");
    const scratch_file repeated;
    const scratch_file parsed;
    std::size_t readable = 0;
    for (const std::size_t segment : {1, 2, 3, 6, 8, 9}) {
        for (std::size_t at = 0; at != 140; ++at) {
            for (const char bits : {'\1', '\20'}) {
                repeated.fill(file_bytes(no_properties, {segment, at, bits}));
                parsed.fill(file_bytes(property, {segment, at, bits}));
                for (auto* const open : {open_file, tdms_open}) {
                    const std::string found = all_that_can_be_read(repeated, open);
                    ASSERT_EQ(all_that_can_be_read(parsed, open), found)
                        << "segment " << segment << ", byte " << at << ", bits " << int{bits};
                    readable += found.size() > 1000;
                }
            }
        }
    }
    EXPECT_GT(readable, 500) << "most changes leave something to read";
}

TEST(RepeatedMetadata, PropertiesOfTheLatestSegment)
{
    std::string file;
    for (const unsigned value : {1, 2, 1}) {
        file += segment({object("/", none, property_p(3, u32(value)))});
    }
    const scratch_file scratch(file);
    const open_tdms opened(scratch, "r");
    std::int32_t value = 0;
    EXPECT_EQ(0, get_file_property_int32(opened.handle, "p", &value));
    EXPECT_EQ(1, value);
}

}  // namespace
