#pragma once

#include <cstdint>

#include "tdms.h"

// A point in time is 16 bytes: the fraction of a second, in units of 2^-64 s, then the seconds
// since 1904-01-01. Programs see it as calendar fields of the local time zone.

namespace tdms_impl {

inline constexpr std::size_t timestamp_size = 16;

/// 24107 days.
inline constexpr std::int64_t seconds_from_1904_to_1970 = 2082844800;

/// Stores the 16 bytes of every value at `target`. The times are taken as standard time.
void encode_timestamps(const timestamp_fields* values, std::uint64_t count, unsigned char* target,
                       bool little = true);

/// Decodes `count` values of 16 bytes, as localtime() shows them; safe in several threads at once.
/// The bytes may be at the end of the memory of `values` itself: a value's bytes are read before
/// anything is written that reaches them.
void decode_timestamps(const unsigned char* bytes, std::uint64_t count, timestamp_fields* values,
                       bool little = true);

}  // namespace tdms_impl
