#pragma once

#include "reader/metadata.h"

namespace tdms_impl {

/// Walks over the objects of one segment's metadata. Of each object, `visitor.object(path, cursor)`
/// reads the raw data index, which only the visitor knows how to take; then every property goes to
/// `visitor.property(entry)`. A status other than 0 from object() ends the walk.
/// @return that status, or TDMS_CHANNEL_READ when the metadata ends too early
template <class Visitor>
int walk_objects(std::span<const unsigned char> metadata, Visitor& visitor)
{
    metadata_cursor cursor(metadata);
    const std::uint32_t object_count = cursor.u32();
    for (std::uint32_t i = 0; i != object_count && cursor.ok(); ++i) {
        const std::string_view path = cursor.string();
        if (const int status = visitor.object(path, cursor)) return status;
        const std::uint32_t property_count = cursor.u32();
        for (std::uint32_t p = 0; p != property_count && cursor.ok(); ++p) {
            const property_entry entry = read_property(cursor);
            if (cursor.ok()) visitor.property(entry);
        }
    }
    return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_READ;
}

}  // namespace tdms_impl
