#include "files/intact_segments.h"

#include <algorithm>
#include <string_view>

#include "codec/lead_in.h"
#include "console/report.h"

namespace tool {
namespace {

constexpr std::uint64_t tag_size = 4;

}  // namespace

// A file can be full of lead-ins that each promise much metadata. The effort spent on them is
// limited to a multiple of the file's size.
intact_segments::intact_segments(const input& file, std::function<void(std::uint64_t)> at)
    : size_(file.size()),
      source_(file, size_),
      scanned_(file.file(), size_),
      at_call_(std::move(at)),
      effort_left_(16 * size_ + (std::uint64_t{64} << 20))
{
}

std::optional<found_segment> intact_segments::next(
    const std::function<void(const lost_range&)>& lost)
{
    while (at_ != size_) {
        at_call_(at_);
        found_segment found = source_.read(at_, number_);
        std::uint64_t resume = 0;
        if (found.intact() && keeps(found, resume)) {
            source_.metadata().confirm();
            at_ = found.end;
            ++number_;
            return found;
        }
        source_.metadata().lose();
        if (resume == 0) resume = resume_after(found);
        if (resume == size_ && effort_left_ == 0) {
            found.fault += "; too many false lead-ins follow";
        }
        const bool truncated = std::string_view(found.facts.state) == "truncated";
        const bool begin_is_certain =
            at_ == 0 || source_.is_boundary(at_) || end_of_damaged(at_) != 0;
        lost({at_, resume, (truncated ? "truncated: " : "") + found.fault, begin_is_certain});
        at_ = resume;
    }
    return std::nullopt;
}

// Whether a segment that looks intact is. If not, it gets a fault, and `resume` the offset of the
// next one, if that is known.
bool intact_segments::keeps(found_segment& found, std::uint64_t& resume)
{
    segment_metadata& metadata = source_.metadata();
    if (!metadata.is_certain(found.facts.raw_length)) {
        metadata.undo();
        found.fault = "the position of its values depends on lost segments";
        return false;
    }
    resume = next_by_metadata(found);
    if (resume == 0 && source_.is_boundary(found.end)) return true;
    // What follows reads other segments.
    metadata.undo();
    if (resume == 0 && end_of_damaged(found.end) == 0) {
        resume = chain_across(found.raw_begin(), found.end);
    }
    if (resume == 0 && effort_left_ != 0) {
        source_.read(found.facts.offset, found.facts.number);
        return true;
    }
    found.fault = "its length is not that of its data";
    return false;
}

// The segment that follows the raw data that the metadata states, where the lead-in says something
// else; 0 if there is none.
std::uint64_t intact_segments::next_by_metadata(const found_segment& found)
{
    const std::uint64_t stated = source_.metadata().stated_size();
    const bool agrees = stated == found.facts.raw_length;
    // Some saves store less than they state.
    const bool less = stated > found.facts.raw_length && source_.is_boundary(found.end);
    const std::uint64_t begin = found.raw_begin();
    if (agrees || less || stated > size_ - begin || !source_.metadata().accounts_for(stated)) {
        return 0;
    }
    const std::uint64_t end = begin + stated;
    return source_.is_boundary(end) && end != size_ ? end : 0;
}

// The first of the segments that follow each other from before `end` to after it, so that nothing
// ends there; 0 if there is no such chain. Bytes of a TDMS file that are values of a segment before
// `end` do not make one.
std::uint64_t intact_segments::chain_across(std::uint64_t begin, std::uint64_t end)
{
    std::uint64_t chain = 0;
    std::uint64_t chain_end = 0;
    for (std::uint64_t offset = begin; offset < end;) {
        const std::uint64_t next = find_lead_in(offset, end);
        if (!spend(next - offset) || next == end) return 0;
        const found_segment inner = source_.read(next, 0);
        if (!spend(source_.effort())) return 0;
        offset = next + tag_size;
        if (!inner.intact()) continue;
        source_.metadata().undo();
        if (next != chain_end) chain = next;
        chain_end = inner.end;
        if (!source_.is_boundary(inner.end)) continue;
        if (inner.end > end) return chain;
        offset = inner.end;
    }
    return 0;
}

// Where a damaged segment ends by what is left of its lead-in or of its metadata; 0 if neither
// leads to another one.
std::uint64_t intact_segments::end_of_damaged(std::uint64_t begin)
{
    std::uint64_t end = source_.has_remains(begin) ? source_.end_by_lead_in(begin) : 0;
    if (end != 0 && source_.is_boundary(end)) return end;
    end = source_.end_by_metadata(begin);
    return spend(source_.effort()) && end != 0 && source_.is_boundary(end) ? end : 0;
}

// Where the next intact segment may begin.
std::uint64_t intact_segments::resume_after(const found_segment& damaged)
{
    const std::uint64_t begin = damaged.facts.offset;
    // Its only fault may be that the file ends within it.
    const bool truncated = damaged.metadata_is_sound && damaged.end > size_ &&
                           source_.metadata().accounts_for(damaged.facts.raw_length);
    if (const std::uint64_t end = end_of_damaged(begin)) return end;
    if (source_.is_boundary(begin)) {
        const std::uint64_t chain = chain_across(begin + tag_size, source_.end_by_lead_in(begin));
        if (chain != 0) return chain;
    }
    return search(begin + 1, truncated);
}

// The first segment from `offset` on; the end of the file if there is none.
std::uint64_t intact_segments::search(std::uint64_t offset, bool must_lead_to_end)
{
    while (effort_left_ != 0) {
        offset = find_lead_in(offset, size_);
        if (offset == size_ || is_plausible(offset, must_lead_to_end)) return offset;
        offset += tag_size;
    }
    return size_;
}

// Whether what looks like a lead-in among lost bytes is one: the metadata fill their place, and the
// raw data are what they state, or another segment follows.
bool intact_segments::is_plausible(std::uint64_t offset, bool must_lead_to_end)
{
    const found_segment found = source_.read(offset, 0);
    if (!spend(source_.effort()) || !found.intact()) return false;
    segment_metadata& metadata = source_.metadata();
    const bool fits = metadata.length() == found.facts.metadata_length &&
                      metadata.accounts_for(found.facts.raw_length);
    const bool certain =
        metadata.is_certain(found.facts.raw_length) && next_by_metadata(found) == 0;
    metadata.undo();
    if (!certain || (must_lead_to_end && !leads_to_end(found.end))) return false;
    if (source_.is_boundary(found.end)) return true;
    return fits && chain_across(found.raw_begin(), found.end) == 0 && effort_left_ != 0;
}

bool intact_segments::leads_to_end(std::uint64_t offset)
{
    while (offset != 0 && offset != size_) {
        if (!spend(tdms_impl::lead_in_size) || !source_.is_boundary(offset)) return false;
        offset = source_.end_by_lead_in(offset);
    }
    return offset == size_;
}

// The first lead-in from `offset` on that begins before `limit`, which is returned if there is
// none.
std::uint64_t intact_segments::find_lead_in(std::uint64_t offset, std::uint64_t limit)
{
    constexpr std::uint64_t at_once = 4096;  // of the buffer, which is larger
    const std::string_view tag(reinterpret_cast<const char*>(tdms_impl::lead_in_begin.data()),
                               tdms_impl::lead_in_begin.size());
    while (size_ - offset >= tag.size() && offset < limit) {
        const std::uint64_t count = std::min(at_once, size_ - offset);
        const unsigned char* const bytes = scanned_.view(offset, count);
        if (bytes == nullptr) throw failure("reading failed at byte " + std::to_string(offset));
        const std::string_view text(reinterpret_cast<const char*>(bytes), count);
        const std::size_t found = text.find(tag);
        if (found != std::string_view::npos) return std::min(offset + found, limit);
        offset += count - (tag.size() - 1);
        at_call_(offset);
    }
    return limit;
}

// @return whether there is any effort left
bool intact_segments::spend(std::uint64_t effort)
{
    effort_left_ -= std::min(effort_left_, effort);
    return effort_left_ != 0;
}

}  // namespace tool
