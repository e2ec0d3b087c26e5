#pragma once

// Values in a file:
// - integers and floating-point numbers are stored as their bits, in either byte order; files of
//   this library are little-endian throughout,
// - a string is its length as 32 bits and its bytes, without a terminator,
// - the block of a string channel is a table of 32-bit end offsets, one for each string, counted
//   from the end of the table, then the bytes of all strings.
// The library reads and writes little-endian only; exported_codec.h offers both orders.

#include <algorithm>
#include <array>
#include <bit>

namespace tdms_impl {

inline constexpr bool host_is_little = std::endian::native == std::endian::little;

/// The value whose bytes are at p. REQUIRES: sizeof(T) readable bytes.
template <class T>
T load(const unsigned char* p, bool little)
{
    std::array<unsigned char, sizeof(T)> bytes;
    std::copy_n(p, sizeof(T), bytes.begin());
    if (little != host_is_little) std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<T>(bytes);
}

/// Stores the value's bytes at p. REQUIRES: sizeof(T) writable bytes.
template <class T>
void store(unsigned char* p, T value, bool little)
{
    auto bytes = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
    if (little != host_is_little) std::reverse(bytes.begin(), bytes.end());
    std::copy_n(bytes.begin(), sizeof(T), p);
}

}  // namespace tdms_impl
