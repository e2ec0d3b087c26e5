#pragma once

#include <limits>

#include "core/data_types.h"
#include "core/object_model.h"

namespace tdms_impl {

/// The bytes of `count` values; a product that overflows becomes the largest size, which no
/// allocation can satisfy.
inline std::size_t size_of(std::uint64_t count, std::size_t value_size)
{
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    return count > most / value_size ? most : count * value_size;
}

/// Strings as they are staged: where each ends, and their bytes.
struct staged_strings {
    byte_vector& ends;
    byte_vector& bytes;
};

/// Appends strings. reader/string_block.h and string_range_readers.cpp read them. A null string is
/// an exception. If there is an exception, `to` may have grown.
void append_strings(std::uint64_t count, const c_string* values, staged_strings to);

}  // namespace tdms_impl
