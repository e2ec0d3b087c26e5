#pragma once

#include "codec/byte_order.h"
#include "codec/timestamp_codec.h"
#include "core/data_types.h"

namespace tdms_impl {

/// Stores a value at p. REQUIRES: stored_size<T> writable bytes.
template <class T>
void store_element(unsigned char* p, const T& value)
{
    store(p, value, true);
}

template <>
inline void store_element(unsigned char* p, const timestamp_fields& value)
{
    encode_timestamps(&value, 1, p);
}

/// The value that is stored at p. REQUIRES: stored_size<T> readable bytes.
template <class T>
T load_element(const unsigned char* p)
{
    return load<T>(p, true);
}

template <>
inline bool load_element<bool>(const unsigned char* p)
{
    return *p != 0;
}

template <>
inline timestamp_fields load_element<timestamp_fields>(const unsigned char* p)
{
    timestamp_fields value{};
    decode_timestamps(p, 1, &value);
    return value;
}

}  // namespace tdms_impl
