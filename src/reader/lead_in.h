#pragma once

#include <cstddef>

#include "tdms.h"

/// Checks one lead-in, 28 bytes as they are in the file, and returns how many bytes of metadata and
/// of raw data follow it. Both lengths are untouched on failure; neither is validated, and a raw
/// data offset after the next segment wraps.
/// @return 0, or of several faults the first: TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION
TDMS_API int read_leadIn(unsigned char* lead_in, unsigned long& meta_length,
                         unsigned long& raw_length);

namespace tdms {

/// Checks the tag, table of contents and version as far as the first `size` bytes of a lead-in
/// reach. @return as read_leadIn()
int check_lead_in(const unsigned char* lead_in, std::size_t size);

}  // namespace tdms
