#include <algorithm>
#include <mutex>

#include "codec/element.h"
#include "core/object_lookup.h"
#include "reader/channel_blocks.h"

namespace tdms_impl {
namespace {

// Locates a channel's values and checks that they are of the wanted type. The type is checked
// second: a file that cannot be read is reported first.
int locate_blocks(void* handle, std::uint32_t type, channel_blocks& values, std::uint64_t& count)
{
    const auto* const wanted = static_cast<const channel*>(handle);
    option* const file = file_of(wanted);
    if (file == nullptr) return TDMS_CHANNEL_HANDLE;
    channel* found = nullptr;
    if (find_object(*file, *wanted, found) != TDMS_OK || !values.locate(*file, *found)) {
        return TDMS_CHANNEL_DATA_READ;
    }
    count = found->value_count;
    return found->data_type == type ? TDMS_OK : TDMS_CHANNEL_DATATYPE;
}

// Where in the caller's array the stored bytes go: at its end, so wider values can be decoded front
// to back.
template <class T>
std::uint64_t stored_offset(std::uint64_t count)
{
    static_assert(sizeof(T) >= stored_size<T>);
    return (sizeof(T) - stored_size<T>)*count;
}

// Turns the stored bytes into values in place.
template <class T>
void decode_in_place(T*, std::uint64_t)
{
    static_assert(host_is_little, "stored numbers are used in place");
}

void decode_in_place(bool* values, std::uint64_t count)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    for (std::uint64_t i = 0; i != count; ++i) bytes[i] = bytes[i] != 0;
}

void decode_in_place(timestamp_fields* values, std::uint64_t count)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(values);
    decode_timestamps(bytes + stored_offset<timestamp_fields>(count), count, values);
}

template <class T>
int fetch(void* handle, T* values)
{
    channel_blocks stored;
    std::uint64_t count = 0;
    if (const int status = locate_blocks(handle, type_code<T>, stored, count)) return status;
    if (count == 0) return TDMS_OK;
    if (values == nullptr || count > ~std::uint64_t{0} / sizeof(T)) return TDMS_CHANNEL_DATA_READ;
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    if (!stored.read(count * stored_size<T>, bytes, stored_offset<T>(count))) {
        return TDMS_CHANNEL_DATA_READ;
    }
    decode_in_place(values, count);
    return TDMS_OK;
}

// The strings of all channels read in this process. Nothing in it ever moves, and it is never
// destroyed: a string stays valid until the process ends, whatever other code runs at its end.
class string_storage {
  public:
    void add(std::list<string_block>&& read, std::uint64_t count, c_string* out)
    {
        const std::lock_guard guard(lock_);
        blocks_.splice(blocks_.end(), read);
        // Deliberate: the storage's first strings are handed out, not those just read.
        for (auto block = blocks_.begin(); count != 0; ++block) {
            const std::uint64_t part = std::min(count, block->count());
            block->for_each(part, [&out](c_string string, std::uint32_t) { *out++ = string; });
            count -= part;
        }
    }

  private:
    std::mutex lock_;
    std::list<string_block> blocks_;
};

string_storage& stringStorage()
{
    static string_storage& storage = *new string_storage;
    return storage;
}

int fetch(void* handle, c_string* values)
{
    channel_blocks stored;
    std::uint64_t count = 0;
    if (const int status = locate_blocks(handle, TDMS_TYPE_STRING, stored, count)) return status;
    if (count == 0) return TDMS_OK;
    std::list<string_block> read;
    if (values == nullptr || !stored.read_strings(count, read)) return TDMS_CHANNEL_DATA_READ;
    stringStorage().add(std::move(read), count, values);
    return TDMS_OK;
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_READER(suffix, type, code)                 \
    int get_channel_data_##suffix(void* channel, type* values) \
    {                                                          \
        return tdms_impl::fetch(channel, values);              \
    }
TDMS_ELEMENTS(TDMS_DEFINE_READER)
