#pragma once

#include <span>

#include "codec/lead_in.h"
#include "reader/file_window.h"

namespace tdms_impl {

struct segment {
    std::span<const unsigned char> metadata;
    std::uint64_t raw_offset;  // in the file
    std::uint64_t raw_length;

    std::uint64_t begin() const { return raw_offset - metadata.size() - lead_in_size; }
    std::uint64_t end() const { return raw_offset + raw_length; }

    /// Whether a file of `size` bytes holds all of the raw data. A negative length, being
    /// unsigned, exceeds what is left.
    bool complete_in(std::uint64_t size) const { return raw_length <= size - raw_offset; }
};

/// Goes from lead-in to lead-in, from `offset` to `size`, and passes each segment to
/// `visit(segment)`, which ends the walk by returning a status other than 0. `offset` advances with
/// the walk, and is left at the segment that ended it.
///
/// Lengths are checked against the rest of the file before they are used. The raw data's length is
/// checked after the visit: faults of the metadata come first.
/// @return 0 when the segments fill the file exactly, a status of the lead-in or of the visit, or
///         TDMS_FILE_READ
template <class Visit>
int walk_segments(file_window& window, std::uint64_t& offset, std::uint64_t size, Visit visit)
{
    while (offset != size) {
        const unsigned char* const lead_in = window.view(offset, lead_in_size);
        if (lead_in == nullptr) return TDMS_FILE_READ;
        std::uint64_t metadata_length = 0;
        std::uint64_t raw_length = 0;
        if (const int status = read_lead_in(lead_in, metadata_length, raw_length)) return status;
        if (metadata_length == 0) return TDMS_FILE_READ;
        const std::uint64_t metadata_offset = offset + lead_in_size;
        const unsigned char* const metadata = window.view(metadata_offset, metadata_length);
        if (metadata == nullptr) return TDMS_FILE_READ;
        const segment found{
            {metadata, metadata_length}, metadata_offset + metadata_length, raw_length};
        if (const int status = visit(found)) return status;
        if (!found.complete_in(size)) return TDMS_FILE_READ;
        offset = found.end();
    }
    return TDMS_OK;
}

}  // namespace tdms_impl
