#pragma once

#include "codec/property_entry.h"
#include "codec/raw_data_index.h"
#include "core/object_path.h"

namespace tdms_impl {

/// An object as the metadata of a segment lists it.
struct listed_object {
    std::string_view path;
    object_path_parts parts;  // of the kind `invalid` if the path names no object
    raw_data_index index;     // of the file or a group only its form
};

/// Walks over the objects of one segment's metadata, from its beginning. Each object goes to
/// `visitor.object(listed)`, then each of its properties to `visitor.property(entry)`. A status
/// other than 0 from object() ends the walk. If the visitor has a begin_object(), it is called
/// before each object is read.
/// @return that status, or TDMS_CHANNEL_READ when the metadata ends too early
template <class Visitor>
int for_each_object(metadata_cursor& cursor, Visitor& visitor)
{
    const std::uint32_t object_count = cursor.u32();
    for (std::uint32_t i = 0; i != object_count && cursor.ok(); ++i) {
        if constexpr (requires { visitor.begin_object(cursor); }) visitor.begin_object(cursor);
        listed_object listed{};
        listed.path = cursor.string();
        listed.parts = parse_object_path(listed.path);
        const bool without_data =
            listed.parts.kind == object_kind::file || listed.parts.kind == object_kind::group;
        listed.index = without_data ? skip_raw_data_index(cursor) : read_raw_data_index(cursor);
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        if (const int status = visitor.object(listed)) return status;
        const std::uint32_t property_count = cursor.u32();
        for (std::uint32_t p = 0; p != property_count && cursor.ok(); ++p) {
            const property_entry entry = read_property(cursor);
            if (cursor.ok()) visitor.property(entry);
        }
    }
    return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_READ;
}

}  // namespace tdms_impl
