#include <algorithm>
#include <limits>

#include "channel_data/staging.h"
#include "codec/element.h"
#include "codec/nanoseconds.h"
#include "core/guarded.h"
#include "reader/stored_values.h"

namespace tdms_impl {
namespace {

// The first values fix a channel's type, unless the file holds values of a channel at that path
// that was removed from memory and created again.
int check_type(channel& c, std::uint32_t type)
{
    std::uint32_t known = c.data_type;
    if (known == 0) {
        if (const int status = type_in_file(c, known)) return status;
    }
    return known == 0 || known == type ? TDMS_OK : TDMS_CHANNEL_DATATYPE;
}

void count_values(channel& c, std::uint32_t type, std::uint64_t count)
{
    const option& file = *c.group->file;
    if (c.data_type == 0) c.saves_at_origin = file.segment_count;  // the type is new to the file
    c.data_type = type;
    c.chunk_count += count;
    c.saves_at_staging = file.segment_count;
}

template <class T>
void encode_values(const T* values, std::uint64_t count, unsigned char* target)
{
    static_assert(host_is_little, "an array in memory is staged as it is");
    if (count != 0) std::memcpy(target, values, count * sizeof(T));
}

void encode_values(const timestamp_fields* values, std::uint64_t count, unsigned char* target)
{
    encode_timestamps(values, count, target);
}

// Appends `count` values, which `encode(target)` stores as a file does.
template <class Encode>
int append_encoded(void* handle, std::uint32_t type, std::uint32_t value_size, std::uint64_t count,
                   const void* values, Encode encode)
{
    return guarded_change<channel>(handle, [&](channel& c) -> int {
        if (values == nullptr && count != 0) return TDMS_ARGUMENT;
        if (const int status = check_type(c, type)) return status;
        const std::size_t size = size_of(count, value_size);
        make_room(c.data, size);
        if (!is_unsaved(c)) {  // saved values are not appended to
            c.data.clear();
            c.chunk_count = 0;
        }
        const std::size_t before = c.data.size();
        c.data.resize(before + size);
        encode(c.data.data() + before);
        count_values(c, type, count);
        return TDMS_OK;
    });
}

template <class T>
int append_values(void* handle, std::uint64_t count, const T* values)
{
    return append_encoded(handle, type_code<T>, stored_size<T>, count, values,
                          [&](unsigned char* target) { encode_values(values, count, target); });
}

int append_values(void* handle, std::uint64_t count, const c_string* values)
{
    return guarded_change<channel>(handle, [&](channel& c) -> int {
        if (values == nullptr && count != 0) return TDMS_ARGUMENT;
        if (std::find(values, values + count, nullptr) != values + count) return TDMS_ARGUMENT;
        if (const int status = check_type(c, TDMS_TYPE_STRING)) return status;
        // Saved strings stay as they are until the new ones are complete.
        const bool unsaved = is_unsaved(c);
        const bool in_place = unsaved || c.string_ends.empty();
        byte_vector bytes;
        byte_vector ends;
        const staged_strings to{in_place ? c.string_ends : ends, in_place ? c.data : bytes};
        const std::size_t old_bytes = to.bytes.size();
        const std::size_t old_ends = to.ends.size();
        const auto undo = [&] {
            to.bytes.resize(old_bytes);
            to.ends.resize(old_ends);
        };
        try {
            append_strings(count, values, to);
        } catch (...) {
            undo();
            throw;
        }
        // Where a string ends is stored as a 32-bit number.
        if (to.bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
            undo();
            return TDMS_ARGUMENT;
        }
        if (!in_place) {
            c.data.swap(bytes);
            c.string_ends.swap(ends);
        }
        if (!unsaved) c.chunk_count = 0;
        count_values(c, TDMS_TYPE_STRING, count);
        return TDMS_OK;
    });
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_APPENDING(suffix, type, code)                               \
    int tdms_append_##suffix(void* channel, uint64_t count, const type* values) \
    {                                                                           \
        return tdms_impl::append_values(channel, count, values);                \
    }
TDMS_ELEMENTS(TDMS_DEFINE_APPENDING)

int tdms_append_nanoseconds(void* channel, uint64_t count, const int64_t* values)
{
    return tdms_impl::append_encoded(
        channel, TDMS_TYPE_TIMESTAMP, tdms_impl::timestamp_size, count, values,
        [&](unsigned char* target) { tdms_impl::encode_nanoseconds(values, count, target); });
}
