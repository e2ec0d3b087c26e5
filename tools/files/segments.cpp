#include "files/segments.h"

#include <algorithm>

#include "codec/lead_in.h"
#include "console/text.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

using tdms_impl::lead_in_size;

std::string stated_and_left(const char* what, std::uint64_t stated, std::uint64_t left)
{
    return with_commas(stated) + " bytes of " + what + " are stated, " + with_commas(left) +
           " are there";
}

}  // namespace

segment_source::segment_source(const input& file, std::uint64_t size)
    : size_(size), window_(file.file(), size), ahead_(file.file(), size)
{
}

found_segment segment_source::read(std::uint64_t offset, std::uint64_t number)
{
    found_segment found;
    segment_facts& facts = found.facts;
    facts.number = number;
    facts.offset = offset;
    effort_ = lead_in_size;
    const std::uint64_t left = size_ - offset;
    const unsigned char* const lead_in =
        window_.view(offset, std::min<std::uint64_t>(left, lead_in_size));
    int status = lead_in == nullptr ? TDMS_FILE_READ : tdms_impl::check_lead_in(lead_in, left);
    if (status == TDMS_OK && left >= lead_in_size) {
        tdms_impl::read_lead_in(lead_in, facts.metadata_length, facts.raw_length);
        if (facts.metadata_length != 0 && facts.metadata_length <= left - lead_in_size) {
            status = read_metadata(offset + lead_in_size, facts.metadata_length, facts);
            found.metadata_is_sound = status == TDMS_OK;
            if (!found.metadata_is_sound) {
                facts.state = "damaged";
                found.status = status;
                found.fault = metadata_.fault();
                return found;
            }
        }
    }
    found.status = status;
    found.fault = lead_in_fault(status, facts, left);
    const bool leads_backwards = facts.raw_length > ~facts.metadata_length;
    if (facts.metadata_length != 0 && !leads_backwards) {
        found.end = offset + lead_in_size + facts.metadata_length + facts.raw_length;
    }
    if (!found.intact() && found.metadata_is_sound) metadata_.undo();
    return found;
}

// Why the bytes that are left cannot be a segment with such a lead-in; empty if they can.
std::string segment_source::lead_in_fault(int status, segment_facts& facts, std::uint64_t left)
{
    const auto word = [&](std::uint64_t at) {
        const unsigned char* const bytes = window_.view(facts.offset + at, 4);
        return bytes == nullptr ? "unreadable"
                                : std::to_string(tdms_impl::load<std::uint32_t>(bytes, true));
    };
    facts.state = "damaged";
    switch (status) {
        case TDMS_OK:
            break;
        case TDMS_FILE_TAG:
            return "no segment begins there";
        case TDMS_FILE_TOC:
            return left < 8 ? "no segment begins there"
                            : "its table of contents is " + word(4) + ", not 14";
        case TDMS_FILE_VERSION:
            return left < 12 ? "no segment begins there"
                             : "its version is " + word(8) + ", not 4713";
        default:
            return "it cannot be read from the device";
    }
    if (left >= lead_in_size && facts.metadata_length == 0) return "it has no metadata";
    if (facts.raw_length > ~facts.metadata_length) {
        return "the next segment is stated to begin within its metadata";
    }
    facts.state = "truncated";
    if (left < lead_in_size) {
        return "of the " + std::to_string(lead_in_size) + " bytes of its lead-in, " +
               std::to_string(left) + (left == 1 ? " is there" : " are there");
    }
    left -= lead_in_size;
    if (facts.metadata_length > left) {
        return stated_and_left("metadata", facts.metadata_length, left);
    }
    left -= facts.metadata_length;
    if (facts.raw_length > left) return stated_and_left("raw data", facts.raw_length, left);
    facts.state = "intact";
    return {};
}

// A damaged length can promise metadata of any size, so reading stops at the first fault.
int segment_source::read_metadata(std::uint64_t offset, std::uint64_t length, segment_facts& facts)
{
    for (std::uint64_t part = 4096;; part *= 16) {
        const std::uint64_t count = std::min(part, length);
        const unsigned char* const bytes = window_.view(offset, count);
        if (bytes == nullptr) return TDMS_FILE_READ;
        const int status = metadata_.read({bytes, count}, facts);
        effort_ += count <= 4096 ? metadata_.length() : count;
        if (status == TDMS_OK || !metadata_.ran_out() || count == length) return status;
    }
}

bool segment_source::is_boundary(std::uint64_t offset)
{
    if (offset >= size_) return offset == size_;
    const std::uint64_t left = size_ - offset;
    const unsigned char* const lead_in =
        ahead_.view(offset, std::min<std::uint64_t>(left, lead_in_size));
    return lead_in != nullptr && tdms_impl::check_lead_in(lead_in, left) == TDMS_OK;
}

bool segment_source::has_remains(std::uint64_t offset)
{
    constexpr std::size_t size = tdms_impl::lead_in_begin.size();
    if (size_ - offset < size) return false;
    const unsigned char* const there = ahead_.view(offset, size);
    if (there == nullptr) return false;
    for (std::size_t i = 0; i != size; i += 4) {
        if (std::equal(there + i, there + i + 4, &tdms_impl::lead_in_begin[i])) return true;
    }
    return false;
}

std::uint64_t segment_source::end_by_lead_in(std::uint64_t offset)
{
    if (size_ - offset < lead_in_size) return 0;
    const unsigned char* const lead_in = ahead_.view(offset, lead_in_size);
    if (lead_in == nullptr) return 0;
    const auto length = tdms_impl::load<std::uint64_t>(lead_in + 12, true);
    return length == 0 || length > size_ - offset - lead_in_size ? 0
                                                                 : offset + lead_in_size + length;
}

std::uint64_t segment_source::end_by_metadata(std::uint64_t offset)
{
    // Longer metadata is unlikely among lost bytes.
    constexpr std::uint64_t most = 64 << 10;
    segment_facts facts{0, offset};
    effort_ = lead_in_size;
    offset += lead_in_size;
    if (offset >= size_) return 0;
    const std::uint64_t count = std::min(size_ - offset, most);
    const unsigned char* const bytes = window_.view(offset, count);
    if (bytes == nullptr) return 0;
    const int status = metadata_.read({bytes, count}, facts);
    effort_ += metadata_.length();
    if (status != TDMS_OK) return 0;
    metadata_.undo();
    offset += metadata_.length();
    const std::uint64_t raw = metadata_.stated_size();
    return raw > size_ - offset || !metadata_.accounts_for(raw) ? 0 : offset + raw;
}

intact_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit)
{
    intact_part intact;
    intact.file_size = file.size();
    segment_source source(file, intact.file_size);
    while (intact.size != intact.file_size) {
        const found_segment found = source.read(intact.size, intact.segments + 1);
        visit(found.facts);
        if (found.intact()) {
            ++intact.segments;
            intact.values += found.facts.values;
            intact.size = found.end;
            continue;
        }
        if (intact.size == 0 && found.status == TDMS_FILE_TAG) {
            intact.end = file_end::damaged;
            intact.fault = message_of(found.status);
            break;
        }
        const bool truncated = std::string_view(found.facts.state) == "truncated";
        intact.end = truncated ? file_end::truncated : file_end::damaged;
        intact.fault = found.facts.state;
        intact.fault.append(" at byte ").append(std::to_string(intact.size));
        intact.fault.append(": segment ").append(std::to_string(found.facts.number));
        intact.fault.append(truncated ? " begins there: " : ": ");
        intact.fault += found.fault;
        break;
    }
    return intact;
}

}  // namespace tool
