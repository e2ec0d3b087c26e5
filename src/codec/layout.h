#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tdms.h"

namespace tdms_impl {

// A segment begins with a lead-in of 28 bytes: tag, table of contents (metadata + new object list +
// raw data), version 4713, then two 64-bit offsets, both counted from the end of the lead-in: where
// the next segment begins, and where the raw data begins, which is the length of the metadata.
inline constexpr std::size_t lead_in_size = 28;
inline constexpr std::array<unsigned char, 12> lead_in_begin{'T', 'D', 'S',  'm',  0x0E, 0,
                                                             0,   0,   0x69, 0x12, 0,    0};

// The first word of an object's raw data index: a marker, or the length of the index in bytes.
inline constexpr std::uint32_t index_none = 0xFFFFFFFF;
inline constexpr std::uint32_t index_as_before = 0;
inline constexpr std::uint32_t index_fixed_size = 20;
inline constexpr std::uint32_t index_string = 28;

inline constexpr char root_path[] = "/";

/// Puts the 28 bytes of a lead-in at p.
void store_lead_in(unsigned char* p, std::uint64_t metadata_length, std::uint64_t raw_length);

}  // namespace tdms_impl

/// A lead-in for a segment with this many bytes of metadata and of raw data.
TDMS_API std::basic_string<unsigned char> write_leadIn(unsigned long metadata_length,
                                                       unsigned long raw_length);
