#pragma once

#include "codec/metadata_bytes.h"
#include "core/data_types.h"

namespace tdms_impl {

/// A property as the metadata of a segment lists it.
struct property_entry {
    std::string_view name;
    std::uint32_t data_type;
    std::span<const unsigned char> value;  // with its length prefix, if it is a string
};

inline void put_property(byte_vector& metadata, const property_entry& entry)
{
    put_string(metadata, entry.name);
    put(metadata, entry.data_type);
    append(metadata, entry.value.data(), entry.value.size());
}

/// An unknown type is an exception.
inline property_entry read_property(metadata_cursor& cursor)
{
    property_entry entry{};
    entry.name = cursor.string();
    entry.data_type = cursor.u32();
    entry.value =
        cursor.bytes(entry.data_type == TDMS_TYPE_STRING ? std::uint64_t{4} + cursor.peek_u32()
                                                         : DataSize.at(entry.data_type));
    return entry;
}

}  // namespace tdms_impl
