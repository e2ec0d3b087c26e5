#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "codec/byte_order.h"
#include "codec/layout.h"
#include "tdms.h"

/// Checks one lead-in, 28 bytes as they are in the file, and returns how many bytes of metadata and
/// of raw data follow it. Both lengths are untouched on failure; neither is validated, and a raw
/// data offset after the next segment wraps.
/// @return 0, or of several faults the first: TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION
TDMS_API int read_leadIn(unsigned char* lead_in, unsigned long& meta_length,
                         unsigned long& raw_length);

namespace tdms_impl {

/// Checks the tag, table of contents and version as far as the first `size` bytes of a lead-in
/// reach. @return as read_leadIn()
inline int check_lead_in(const unsigned char* lead_in, std::size_t size)
{
    // Deliberate: the one table of contents that this library writes, and no other.
    constexpr std::array faults{TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION};
    for (std::size_t i = 0; i != std::min(size, lead_in_begin.size()); ++i) {
        if (lead_in[i] != lead_in_begin[i]) return faults[i / 4];
    }
    return TDMS_OK;
}

/// The same as read_leadIn(), without a call for each segment of a file.
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
