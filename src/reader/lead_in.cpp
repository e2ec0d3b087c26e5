#include "reader/lead_in.h"

#include <algorithm>

namespace tdms {

int check_lead_in(const unsigned char* lead_in, std::size_t size)
{
    // Deliberate: the one table of contents that this library writes, and no other.
    constexpr std::array faults{TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION};
    for (std::size_t i = 0; i != std::min(size, lead_in_begin.size()); ++i) {
        if (lead_in[i] != lead_in_begin[i]) return faults[i / 4];
    }
    return TDMS_OK;
}

}  // namespace tdms

int read_leadIn(unsigned char* lead_in, unsigned long& meta_length, unsigned long& raw_length)
{
    return tdms::read_lead_in(lead_in, meta_length, raw_length);
}
