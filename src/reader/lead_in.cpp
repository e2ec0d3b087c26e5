#include "reader/lead_in.h"

#include <algorithm>

#include "codec/byte_order.h"
#include "codec/layout.h"

namespace {

bool equal(const unsigned char* p, const std::array<unsigned char, 4>& pattern)
{
    return std::equal(pattern.begin(), pattern.end(), p);
}

}  // namespace

int read_leadIn(unsigned char* lead_in, unsigned long& meta_length, unsigned long& raw_length)
{
    if (!equal(lead_in, tdms::lead_in_tag)) return TDMS_FILE_TAG;
    // Deliberate: the one table of contents that this library writes, and no other.
    if (!equal(lead_in + 4, tdms::lead_in_toc)) return TDMS_FILE_TOC;
    if (!equal(lead_in + 8, tdms::lead_in_version)) return TDMS_FILE_VERSION;
    meta_length = tdms::load<unsigned long>(lead_in + 20, true);
    raw_length = tdms::load<unsigned long>(lead_in + 12, true) - meta_length;
    return TDMS_OK;
}
