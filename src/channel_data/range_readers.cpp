// The functions that read a range of a channel's values.

#include <cstring>
#include <type_traits>

#include "channel_data/value_range.h"
#include "codec/element.h"
#include "codec/nanoseconds.h"
#include "core/guarded.h"

namespace tdms_impl {
namespace {

// Locates a range of a channel's values, which `is_type(type)` must accept, and reads it, if it is
// not empty, by `read(range, type)`.
template <class IsType, class Read>
int with_range(void* handle, std::uint64_t first, std::uint64_t count, const void* target,
               IsType is_type, Read read)
{
    return guarded<channel>(handle, [&](channel& c) -> int {
        if (target == nullptr && count != 0) return TDMS_ARGUMENT;
        stored_values values{};
        if (const int status = locate_values(c, values)) return status;
        if (values.data_type != 0 && !is_type(values.data_type)) return TDMS_CHANNEL_DATATYPE;
        if (const int status = check_range(values, first, count)) return status;
        if (count == 0) return TDMS_OK;
        value_range range(values, first, count);
        return read(range, values.data_type);
    });
}

// Converts stored values, which are at the end of the caller's array, front to back: no stored
// value is overwritten before it is read.
template <class Stored, class T>
void convert(T* values, std::uint64_t count)
{
    static_assert(sizeof(T) >= stored_size<Stored>);
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    const unsigned char* stored = bytes + (sizeof(T) - stored_size<Stored>)*count;
    for (std::uint64_t i = 0; i != count; ++i, stored += stored_size<Stored>) {
        const T value = static_cast<T>(load_element<Stored>(stored));
        std::memcpy(bytes + sizeof(T) * i, &value, sizeof value);
    }
}

// Reads into the end of the caller's array, since values may be wider in memory than in the file.
template <class Stored, class T>
int read_as(value_range& range, std::uint64_t count, T* values)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    unsigned char* const target = bytes + (sizeof(T) - stored_size<Stored>)*count;
    if (const int status = range.read(stored_size<Stored>, target)) return status;
    if constexpr (std::is_same_v<T, timestamp_fields>) {
        decode_timestamps(target, count, values);
    } else if constexpr (!std::is_same_v<Stored, T> || std::is_same_v<T, bool>) {
        convert<Stored>(values, count);
    }
    return TDMS_OK;
}

template <class T>
int read_values(void* handle, std::uint64_t first, std::uint64_t count, T* values)
{
    return with_range(
        handle, first, count, values, [](std::uint32_t type) { return type == type_code<T>; },
        [&](value_range& range, std::uint32_t) { return read_as<T>(range, count, values); });
}

// Whether values of type T are read as doubles, too.
template <class T>
constexpr bool is_number = std::is_arithmetic_v<T>;

// Every number is read as a double, too.
int read_values(void* handle, std::uint64_t first, std::uint64_t count, double* values)
{
    const auto is_number_type = [](std::uint32_t type) {
        return with_element_type(type, []<class T>(element_tag<T>) { return is_number<T>; });
    };
    return with_range(handle, first, count, values, is_number_type,
                      [&](value_range& range, std::uint32_t type) {
                          return with_element_type(type, [&]<class T>(element_tag<T>) -> int {
                              if constexpr (is_number<T>) return read_as<T>(range, count, values);
                              return TDMS_CHANNEL_DATATYPE;
                          });
                      });
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_RANGE_READER(suffix, type, code)                                    \
    int tdms_read_##suffix(void* channel, uint64_t first, uint64_t count, type* values) \
    {                                                                                   \
        return tdms_impl::read_values(channel, first, count, values);                   \
    }
TDMS_FIXED_SIZE_ELEMENTS(TDMS_DEFINE_RANGE_READER)

int tdms_read_nanoseconds(void* channel, uint64_t first, uint64_t count, int64_t* values)
{
    return tdms_impl::with_range(
        channel, first, count, values,
        [](std::uint32_t type) { return type == TDMS_TYPE_TIMESTAMP; },
        [values](tdms_impl::value_range& range, std::uint32_t) {
            std::int64_t* next = values;
            return range.read_piecemeal(tdms_impl::timestamp_size,
                                        [&next](const unsigned char* bytes, std::uint64_t part) {
                                            tdms_impl::decode_nanoseconds(bytes, part, next);
                                            next += part;
                                        });
        });
}

int tdms_get_num_values(void* channel, uint64_t* count, uint64_t* lost)
{
    return tdms_impl::guarded<tdms_impl::channel>(channel, [&](tdms_impl::channel& c) {
        tdms_impl::stored_values values{};
        if (const int status = tdms_impl::locate_values(c, values)) return status;
        if (count != nullptr) *count = values.count();
        if (lost != nullptr) *lost = values.channel == nullptr ? 0 : values.channel->lost();
        return int{TDMS_OK};
    });
}
