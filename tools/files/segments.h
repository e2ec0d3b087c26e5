#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "files/input.h"
#include "files/segment_metadata.h"
#include "reader/file_window.h"

namespace tool {

/// A segment as it was found at an offset, intact or not.
struct found_segment {
    segment_facts facts;
    std::uint64_t end = 0;  // as its lead-in states it; 0 if that leads nowhere
    int status = 0;         // of the library, if it is not intact
    bool metadata_is_sound = false;
    std::string fault;  // empty if it is intact

    bool intact() const { return fault.empty(); }
    std::uint64_t raw_begin() const { return end - facts.raw_length; }
};

/// Reads lead-ins and metadata, and accepts what the library accepts.
class segment_source {
  public:
    segment_source(const input& file, std::uint64_t size);

    /// Reads the segment at an offset less than the size. If it is intact, what its metadata
    /// states holds for the segments read after it.
    found_segment read(std::uint64_t offset, std::uint64_t number);

    /// Whether a segment may begin there, or the file ends there.
    bool is_boundary(std::uint64_t offset);

    /// Where a segment ends by its metadata, whatever its lead-in is; 0 if it is damaged.
    std::uint64_t end_by_metadata(std::uint64_t offset);

    /// Whether the tag, the table of contents or the version of a lead-in is at the offset.
    bool has_remains(std::uint64_t offset);

    /// Where the lead-in at an offset says that the segment ends; 0 if there is none.
    std::uint64_t end_by_lead_in(std::uint64_t offset);

    segment_metadata& metadata() { return metadata_; }

    /// How many bytes of metadata the latest call had to read.
    std::uint64_t effort() const { return effort_; }

  private:
    std::string lead_in_fault(int status, segment_facts& facts, std::uint64_t left);
    int read_metadata(std::uint64_t offset, std::uint64_t length, segment_facts& facts);

    std::uint64_t size_;
    tdms_impl::file_window window_;
    tdms_impl::file_window ahead_;  // where segments end
    segment_metadata metadata_;
    std::uint64_t effort_ = 0;
};

/// What follows the last intact segment.
enum class file_end { nothing, truncated, damaged };

/// The intact segments at the beginning of a file, and why not all are.
struct intact_part {
    std::uint64_t segments = 0;
    std::uint64_t size = 0;
    std::uint64_t values = 0;
    std::uint64_t file_size = 0;
    file_end end = file_end::nothing;
    std::string fault;  // empty if the file is intact
};

/// Walks the segments of a file as the library does when it opens it. `visit` gets every segment,
/// up to the first that is not intact.
intact_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit);

}  // namespace tool
