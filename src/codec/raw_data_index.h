#pragma once

#include "codec/metadata_bytes.h"
#include "core/data_types.h"

namespace tdms_impl {

// The first word of a raw data index: a marker, or the length of the index in bytes.
inline constexpr std::uint32_t index_none = 0xFFFFFFFF;
inline constexpr std::uint32_t index_as_before = 0;
inline constexpr std::uint32_t index_fixed_size = 20;
inline constexpr std::uint32_t index_string = 28;

/// The values of a channel that a segment states. Fields after `form` are set only for the explicit
/// forms.
struct raw_data_index {
    std::uint32_t form;
    std::uint32_t data_type;
    std::uint32_t dimension;
    std::uint64_t value_count;
    std::uint64_t byte_count;  // of the string form only
};

inline bool is_explicit(std::uint32_t form)
{
    return form == index_fixed_size || form == index_string;
}

inline bool is_known_form(std::uint32_t form)
{
    return is_explicit(form) || form == index_none || form == index_as_before;
}

/// Appends the index of a channel whose values have a fixed size.
inline void put_fixed_size_index(byte_vector& metadata, std::uint32_t data_type,
                                 std::uint64_t value_count)
{
    put(metadata, index_fixed_size, data_type, std::uint32_t{1}, value_count);
}

/// Appends the index of a string channel. Its block has `byte_count` bytes, the table included.
inline void put_string_index(byte_vector& metadata, std::uint64_t value_count,
                             std::uint64_t byte_count)
{
    put(metadata, index_string, std::uint32_t{TDMS_TYPE_STRING}, std::uint32_t{1}, value_count,
        byte_count);
}

inline raw_data_index read_raw_data_index(metadata_cursor& cursor)
{
    raw_data_index index{};
    index.form = cursor.u32();
    if (is_explicit(index.form)) {
        index.data_type = cursor.u32();
        index.dimension = cursor.u32();
        index.value_count = cursor.u64();
    }
    if (index.form == index_string) index.byte_count = cursor.u64();
    return index;
}

/// Skips the index of the file or a group, which have no raw data. Any first word but the two
/// markers is the length of an index.
/// @return the index; only its form is set
inline raw_data_index skip_raw_data_index(metadata_cursor& cursor)
{
    raw_data_index index{};
    index.form = cursor.peek_u32();
    const bool marker = index.form == index_as_before || index.form == index_none;
    cursor.bytes(marker ? 4 : index.form);
    return index;
}

/// The size in bytes of the block that an explicit index states. An unknown type is an exception.
/// @return false if it overflows 64 bits
inline bool stated_size(const raw_data_index& index, std::uint64_t& size)
{
    if (index.form == index_string) {
        size = index.byte_count;
        return true;
    }
    const std::uint32_t each = DataSize.at(index.data_type);
    return !__builtin_mul_overflow(index.value_count, each, &size);
}

/// More bytes or values than 64 bits can count.
inline constexpr std::uint64_t too_much = ~std::uint64_t{0};

/// The sum, or too_much.
inline std::uint64_t sum_of(std::uint64_t a, std::uint64_t b)
{
    std::uint64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? too_much : sum;
}

/// Applies an index to what is known of its channel: the type, 0 while it is open, and the number
/// of values of the latest explicit index.
inline int apply_index(const raw_data_index& index, std::uint32_t& data_type,
                       std::uint64_t& chunk_count)
{
    if (!is_known_form(index.form)) return TDMS_INDEX;
    if (!is_explicit(index.form)) return TDMS_OK;
    // Deliberate: what type an index of the string form states does not matter, as long as the
    // channel is known to hold strings.
    const std::uint32_t stated =
        index.form == index_string ? std::uint32_t{TDMS_TYPE_STRING} : index.data_type;
    if (data_type != 0 && data_type != stated) return TDMS_CHANNEL_READ;
    if (data_type == 0) data_type = index.data_type;
    if (index.dimension != 1) return TDMS_CHANNEL_READ;
    chunk_count = index.value_count;
    return TDMS_OK;
}

}  // namespace tdms_impl
