#include "codec/layout.h"

#include <algorithm>

#include "codec/byte_order.h"

namespace tdms_impl {

void store_lead_in(unsigned char* p, std::uint64_t metadata_length, std::uint64_t raw_length)
{
    p = std::copy(lead_in_begin.begin(), lead_in_begin.end(), p);
    store(p, metadata_length + raw_length, true);
    store(p + 8, metadata_length, true);
}

}  // namespace tdms_impl

std::basic_string<unsigned char> write_leadIn(unsigned long metadata_length,
                                              unsigned long raw_length)
{
    std::basic_string<unsigned char> bytes(tdms_impl::lead_in_size, 0);
    tdms_impl::store_lead_in(bytes.data(), metadata_length, raw_length);
    return bytes;
}
