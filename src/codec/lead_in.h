#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "codec/byte_order.h"
#include "tdms.h"

namespace tdms_impl {

// A segment begins with a lead-in of 28 bytes: tag, table of contents (metadata + new object list +
// raw data), version 4713, then two 64-bit offsets, both counted from the end of the lead-in: where
// the next segment begins, and where the raw data begins, which is the length of the metadata.
inline constexpr std::size_t lead_in_size = 28;
inline constexpr std::array<unsigned char, 12> lead_in_begin{'T', 'D', 'S',  'm',  0x0E, 0,
                                                             0,   0,   0x69, 0x12, 0,    0};

/// Stores the 28 bytes of a lead-in at p.
inline void store_lead_in(unsigned char* p, std::uint64_t metadata_length, std::uint64_t raw_length)
{
    p = std::copy(lead_in_begin.begin(), lead_in_begin.end(), p);
    store(p, metadata_length + raw_length, true);
    store(p + 8, metadata_length, true);
}

/// Checks the tag, table of contents and version as far as the first `size` bytes of a lead-in
/// reach. @return 0, or of several faults the first: TDMS_FILE_TAG, TDMS_FILE_TOC,
///                TDMS_FILE_VERSION
inline int check_lead_in(const unsigned char* lead_in, std::size_t size)
{
    // Deliberate: the one table of contents that this library writes, and no other.
    constexpr std::array faults{TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION};
    for (std::size_t i = 0; i != std::min(size, lead_in_begin.size()); ++i) {
        if (lead_in[i] != lead_in_begin[i]) return faults[i / 4];
    }
    return TDMS_OK;
}

/// Checks the 28 bytes of a lead-in, and returns how many bytes of metadata and of raw data follow
/// it. Both lengths are untouched on failure; neither is validated, and a raw data offset after the
/// next segment wraps.
/// @return as check_lead_in()
inline int read_lead_in(const unsigned char* lead_in, std::uint64_t& metadata_length,
                        std::uint64_t& raw_length)
{
    if (std::memcmp(lead_in, lead_in_begin.data(), lead_in_begin.size()) != 0) {
        return check_lead_in(lead_in, lead_in_size);
    }
    metadata_length = load<std::uint64_t>(lead_in + 20, true);
    raw_length = load<std::uint64_t>(lead_in + 12, true) - metadata_length;
    return TDMS_OK;
}

}  // namespace tdms_impl
