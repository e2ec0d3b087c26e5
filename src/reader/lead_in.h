#pragma once

#include "tdms.h"

/// Checks one lead-in, 28 bytes as they stand in the file, and tells how many bytes of metadata and
/// of raw data follow it. Both lengths are untouched on failure; neither is validated, and a raw
/// data offset behind the next segment wraps.
/// @return 0, or of several faults the first: TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION
TDMS_API int read_leadIn(unsigned char* lead_in, unsigned long& meta_length,
                         unsigned long& raw_length);
