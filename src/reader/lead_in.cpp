#include "reader/lead_in.h"

int read_leadIn(unsigned char* lead_in, unsigned long& meta_length, unsigned long& raw_length)
{
    return tdms_impl::read_lead_in(lead_in, meta_length, raw_length);
}
