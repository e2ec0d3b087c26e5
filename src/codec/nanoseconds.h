#pragma once

#include <cstdint>

// A point in time as a signed 64-bit count of nanoseconds since 1970-01-01T00:00:00 UTC, and as the
// 16 bytes of a timestamp in a file (timestamp_codec.h). Both directions round to the nearest, so
// every count survives a round trip.

namespace tdms_impl {

/// Stores the 16 bytes of every value at `target`.
void encode_nanoseconds(const std::int64_t* values, std::uint64_t count, unsigned char* target);

/// Decodes `count` values of 16 bytes. A time beyond the range of counts becomes the nearest count.
void decode_nanoseconds(const unsigned char* bytes, std::uint64_t count, std::int64_t* values);

}  // namespace tdms_impl
