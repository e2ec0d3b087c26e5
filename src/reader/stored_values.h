#pragma once

#include "core/object_model.h"
#include "reader/value_index.h"

namespace tdms_impl {

/// The values that a file holds of one channel, to be read in any range.
struct stored_values {
    const stored_channel* channel;  // null if the file does not list it
    std::uint32_t data_type;        // the file's, else that in memory; 0 if there is none
    int file;                       // descriptor
    std::uint64_t file_size;

    std::uint64_t count() const { return channel == nullptr ? 0 : channel->count(); }
};

/// Locates a channel's values. The first call for a file walks over its metadata, a later one over
/// what was appended since. @return 0 or TDMS_CHANNEL_DATA_READ
int locate_values(channel& c, stored_values& found);

/// The type that the values of a channel must have. If the channel was removed from memory and
/// created again, the file may hold values of another type. @return as locate_values()
int type_in_file(channel& c, std::uint32_t& type);

}  // namespace tdms_impl
