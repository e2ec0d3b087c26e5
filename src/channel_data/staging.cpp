#include <algorithm>
#include <cstring>
#include <limits>

#include "codec/element.h"
#include "core/data_types.h"
#include "core/handles.h"
#include "core/text.h"

namespace tdms {
namespace {

static_assert(host_is_little, "an array in memory is staged as it is");

// Finds the channel. It must have that type or none yet.
int prepare_staging(option& file, const void* handle, std::uint32_t type, channel*& found)
{
    if (const int status = find_object(file, *static_cast<const channel*>(handle), found)) {
        return status;
    }
    if (found->data_type != 0 && found->data_type != type) return TDMS_CHANNEL_DATATYPE;
    return TDMS_OK;
}

// The bytes of `count` values. A product that does not fit becomes a size that no memory has.
std::size_t size_of(std::uint64_t count, std::size_t value_size)
{
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    return count > most / value_size ? most : count * value_size;
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

// The end offsets of the texts, then their bytes.
byte_vector encode_texts(std::uint64_t count, const char* const* values)
{
    // One look at each text: room for texts of 16 bytes, and half as much again whenever it is
    // full.
    byte_vector bytes(size_of(count, 4 + 16));
    const std::size_t table_size = 4 * count;
    std::size_t size = table_size;
    for (std::uint64_t i = 0; i != count; ++i) {
        const std::string_view value = text(values[i]);
        if (value.size() > bytes.size() - size) {
            bytes.resize(bytes.size() + bytes.size() / 2 + value.size());
        }
        std::memcpy(bytes.data() + size, value.data(), value.size());
        size += value.size();
        store(bytes.data() + 4 * i, static_cast<std::uint32_t>(size - table_size), true);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

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
    return TDMS_OK;
}

int option::set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                             byte_vector&& bytes)
{
    channel* found = nullptr;
    if (const int status = prepare_staging(*this, handle, type, found)) return status;
    found->data = std::move(bytes);
    found->data_type = type;
    found->chunk_count = count;
    return TDMS_OK;
}

}  // namespace tdms

#define TDMS_DEFINE_STAGING(suffix, type, code)                                      \
    int set_channel_data_##suffix(void* channel, uint64_t count, const type* values) \
    {                                                                                \
        return tdms::stage(channel, count, values);                                  \
    }
TDMS_FIXED_SIZE_ELEMENTS(TDMS_DEFINE_STAGING)

int set_channel_data_string(void* channel, uint64_t count, const char* const* values)
{
    tdms::option* const file = tdms::file_of(static_cast<tdms::channel*>(channel));
    if (file == nullptr) return TDMS_CHANNEL_HANDLE;
    if (values == nullptr && count != 0) return TDMS_CHANNEL_DATA_READ;
    return file->set_channel_data(channel, TDMS_TYPE_STRING, count,
                                  tdms::encode_texts(count, values));
}
