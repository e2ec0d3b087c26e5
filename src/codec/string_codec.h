#pragma once

#include <algorithm>
#include <string_view>

#include "codec/byte_order.h"
#include "core/byte_vector.h"

// A string as a file stores it, except in string channels: its length as 32 bits, then its bytes.
// In metadata, put_string() and metadata_cursor::string() do the same.

namespace tdms_impl {

inline constexpr std::size_t string_prefix_size = 4;

inline byte_string encode_string(std::string_view value)
{
    byte_string bytes(string_prefix_size + value.size(), 0);
    store(bytes.data(), static_cast<std::uint32_t>(value.size()), true);
    std::copy(value.begin(), value.end(), bytes.begin() + string_prefix_size);
    return bytes;
}

/// The bytes after the prefix, whatever it states. REQUIRES: as many bytes as a prefix has.
inline std::string_view after_prefix(const byte_string& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()) + string_prefix_size,
            bytes.size() - string_prefix_size};
}

/// The stored string, as far as it is there; empty if too short to hold a length.
inline std::string_view stored_string(const byte_string& bytes)
{
    if (bytes.size() < string_prefix_size) return {};
    return after_prefix(bytes).substr(0, load<std::uint32_t>(bytes.data(), true));
}

}  // namespace tdms_impl
