#pragma once

#include <cstdio>
#include <span>

#include "codec/layout.h"
#include "reader/file_window.h"
#include "reader/lead_in.h"

namespace tdms {

struct segment {
    std::span<const unsigned char> metadata;
    std::uint64_t raw_offset;  // in the file
    std::uint64_t raw_length;
};

/// A read that fails closes the stream for good.
inline int reading_failed(std::FILE*& stream)
{
    std::fclose(stream);
    stream = nullptr;
    return TDMS_FILE_READ;
}

/// Goes from lead-in to lead-in through a file of `size` bytes and hands each segment to
/// `visit(segment)`, which ends the walk by returning a status other than 0.
///
/// Lengths are checked against what is left of the file before anything is read by them; one that
/// leads backwards is more than any file has left. The raw data's length is checked after the
/// visit: the faults of the metadata come first.
/// @return 0 when the segments use up the file exactly, a status of the lead-in or of the visit, or
///         TDMS_FILE_READ, which closes the stream and sets it to null
template <class Visit>
int walk_segments(std::FILE*& stream, std::uint64_t size, file_window& window, Visit visit)
{
    std::uint64_t offset = 0;
    while (offset != size) {
        unsigned char* const lead_in = window.view(offset, lead_in_size);
        if (lead_in == nullptr) return reading_failed(stream);
        unsigned long metadata_length = 0;
        unsigned long raw_length = 0;
        if (const int status = read_leadIn(lead_in, metadata_length, raw_length)) return status;
        offset += lead_in_size;

        if (metadata_length == 0) return reading_failed(stream);
        const unsigned char* const metadata = window.view(offset, metadata_length);
        if (metadata == nullptr) return reading_failed(stream);
        offset += metadata_length;

        const segment found{{metadata, metadata_length}, offset, raw_length};
        if (const int status = visit(found)) return status;
        if (raw_length > size - offset) return reading_failed(stream);
        offset += raw_length;
    }
    return TDMS_OK;
}

}  // namespace tdms
