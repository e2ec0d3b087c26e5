#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "tdms.h"

// A point in time is 16 bytes: the fraction of a second, in units of 2^-64 s, then the whole
// seconds since 1904-01-01. Programs see it as calendar fields of the local time zone.

/// The 16 bytes of a calendar time, which is taken as standard time.
TDMS_API std::basic_string<unsigned char> write_timestamp(int year, int month, int day, int hour,
                                                          int minute, int second, int microsecond,
                                                          bool little);

/// The calendar time of the 16 bytes at p, as localtime() shows it. Safe in several threads at
/// once.
TDMS_API timestamp_fields read_timestamp(const unsigned char* p, bool little);

namespace tdms_impl {

inline constexpr std::size_t timestamp_size = 16;

/// 24107 days.
inline constexpr std::int64_t seconds_from_1904_to_1970 = 2082844800;

/// Puts the 16 bytes of every value at `target`.
void encode_timestamps(const timestamp_fields* values, std::uint64_t count, unsigned char* target);

/// Decodes `count` values of 16 bytes. The bytes may stand at the end of the memory of `values`
/// itself: a value's bytes are read before anything is written that reaches them.
void decode_timestamps(const unsigned char* bytes, std::uint64_t count, timestamp_fields* values);

}  // namespace tdms_impl
