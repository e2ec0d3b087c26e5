#include "channel_data/staging.h"

#include <algorithm>
#include <array>

#include "codec/element.h"
#include "codec/short_move.h"
#include "core/c_string.h"
#include "core/object_lookup.h"

namespace tdms_impl {
namespace {

static_assert(host_is_little, "an array in memory is staged as it is");

// Finds the channel, which must have that type or none yet.
int prepare_staging(option& file, const void* handle, std::uint32_t type, channel*& found)
{
    if (const int status = find_object(file, *static_cast<const channel*>(handle), found)) {
        return status;
    }
    if (found->data_type != 0 && found->data_type != type) return TDMS_CHANNEL_DATATYPE;
    return TDMS_OK;
}

template <class T>
int stage(void* handle, std::uint64_t count, const T* values)
{
    option* const file = file_of(static_cast<channel*>(handle));
    if (file == nullptr) return TDMS_CHANNEL_HANDLE;
    if (values == nullptr && count != 0) return TDMS_CHANNEL_DATA_READ;
    const std::size_t size = size_of(count, stored_size<T>);
    if constexpr (std::is_same_v<T, timestamp_fields>) {
        byte_vector bytes(size);
        encode_timestamps(values, count, bytes.data());
        return file->set_channel_data(handle, type_code<T>, count, std::move(bytes));
    } else {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(values);
        return file->set_channel_data(handle, type_code<T>, count, std::span(bytes, size));
    }
}

int stage(void* handle, std::uint64_t count, const c_string* values)
{
    option* const file = file_of(static_cast<channel*>(handle));
    if (file == nullptr) return TDMS_CHANNEL_HANDLE;
    if (values == nullptr && count != 0) return TDMS_CHANNEL_DATA_READ;
    byte_vector ends;
    byte_vector bytes;
    append_strings(count, values, {ends, bytes});
    return file->set_channel_data(handle, TDMS_TYPE_STRING, count, std::move(bytes),
                                  std::move(ends));
}

}  // namespace

void append_strings(std::uint64_t count, const char* const* values, staged_strings to)
{
    make_room(to.bytes, size_of(count, 16));  // a guess
    make_room(to.ends, size_of(count, 4));
    const std::size_t table = to.ends.size();
    to.ends.resize(table + 4 * count);
    unsigned char* end = to.ends.data() + table;
    // Some strings at a time, so each is measured once, and room is made for all of them at once.
    std::array<std::string_view, 64> part;
    for (std::uint64_t first = 0; first != count;) {
        const auto strings = std::min<std::uint64_t>(count - first, part.size());
        std::size_t size = 0;
        for (std::size_t i = 0; i != strings; ++i) {
            part[i] = not_null(values[first + i]);
            size += part[i].size();
        }
        std::size_t next = to.bytes.size();
        make_room(to.bytes, size);
        to.bytes.resize(next + size);
        for (std::size_t i = 0; i != strings; ++i, end += 4) {
            short_move(to.bytes.data() + next,
                       reinterpret_cast<const unsigned char*>(part[i].data()), part[i].size());
            next += part[i].size();
            store(end, static_cast<std::uint32_t>(next), true);
        }
        first += strings;
    }
}

int option::set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                             std::span<const unsigned char> bytes)
{
    channel* found = nullptr;
    if (const int status = prepare_staging(*this, handle, type, found)) return status;
    byte_vector& staged = found->data;
    if (bytes.size() > staged.capacity()) {
        byte_vector fresh;
        fresh.reserve(bytes.size());
        staged.swap(fresh);
    }
    staged.clear();
    append(staged, bytes.data(), bytes.size());
    found->data_type = type;
    found->chunk_count = count;
    found->saves_at_staging = segment_count;
    return TDMS_OK;
}

int option::set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                             byte_vector&& bytes, byte_vector&& string_ends)
{
    channel* found = nullptr;
    if (const int status = prepare_staging(*this, handle, type, found)) return status;
    found->data = std::move(bytes);
    found->string_ends = std::move(string_ends);
    found->data_type = type;
    found->chunk_count = count;
    found->saves_at_staging = segment_count;
    return TDMS_OK;
}

}  // namespace tdms_impl

#define TDMS_DEFINE_STAGING(suffix, type, code)                                      \
    int set_channel_data_##suffix(void* channel, uint64_t count, const type* values) \
    {                                                                                \
        return tdms_impl::stage(channel, count, values);                             \
    }
TDMS_ELEMENTS(TDMS_DEFINE_STAGING)
