#pragma once

#include <functional>
#include <optional>
#include <string>

#include "files/segments.h"

namespace tool {

/// A part of a file that holds no intact segment.
struct lost_range {
    std::uint64_t begin;
    std::uint64_t end;
    std::string reason;
    bool begin_is_certain;  // or the segment before it may lack bytes, and end in this range
};

/// Finds the intact segments of a damaged file, one after the other.
///
/// Where a segment is not intact, the next one is where the damaged one's lengths say, if there is
/// a lead-in. Otherwise the bytes after it are searched, so that raw data which hold the bytes of a
/// TDMS file are searched only if they are not known to be raw data.
///
/// Raw data has no checksums, so a segment is taken for intact if its metadata is sound and another
/// segment, even a damaged one, or the end of the file follows. If nothing does that is known to be
/// one, bytes may be missing within it: it is lost if a segment that begins in its raw data ends
/// after it and is followed by another one, and doubtful if not.
///
/// What a segment states can refer to segments before it. If some of these are lost, a segment is
/// intact only if the length of its raw data proves what it refers to.
class intact_segments {
  public:
    /// @param at is called with the offset while the search goes on
    intact_segments(const input& file, std::function<void(std::uint64_t)> at);

    /// The next intact segment; none at the end of the file. What lies between it and the one
    /// before goes to `lost(range)`.
    std::optional<found_segment> next(const std::function<void(const lost_range&)>& lost);

  private:
    bool keeps(found_segment& found, std::uint64_t& resume);
    std::uint64_t next_by_metadata(const found_segment& found);
    std::uint64_t chain_across(std::uint64_t begin, std::uint64_t end);
    bool is_plausible(std::uint64_t offset, bool must_lead_to_end);
    bool leads_to_end(std::uint64_t offset);
    std::uint64_t end_of_damaged(std::uint64_t begin);
    std::uint64_t resume_after(const found_segment& damaged);
    std::uint64_t search(std::uint64_t offset, bool must_lead_to_end);
    std::uint64_t find_lead_in(std::uint64_t offset, std::uint64_t limit);
    bool spend(std::uint64_t effort);

    std::uint64_t size_;
    segment_source source_;
    tdms_impl::file_window scanned_;
    std::function<void(std::uint64_t)> at_call_;
    std::uint64_t at_ = 0;
    std::uint64_t number_ = 1;
    std::uint64_t effort_left_;
};

}  // namespace tool
