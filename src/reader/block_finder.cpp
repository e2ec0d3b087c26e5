#include "reader/block_finder.h"

#include <stdexcept>

namespace tdms_impl {
namespace {

// These end a walk, besides the statuses of for_each_object().
constexpr int target_met = 1;
constexpr int not_found = TDMS_CHANNEL_DATA_READ;

}  // namespace

int block_finder::add_segment(const segment& where)
{
    segment_ = where;
    before_ = 0;
    member_met_ = false;
    const int status = seen_.walk(where.metadata, *this);
    return status == target_met ? TDMS_OK : status;
}

int block_finder::find(const listed_object& listed, channel*& member)
{
    member = members_.find(listed.path);
    return TDMS_OK;
}

int block_finder::take(const found_object<channel>& found)
{
    const auto& [member, index] = found;
    // Deliberate: after the group's first channel every object is assumed to be another; one that
    // is not throws.
    if (member == nullptr && member_met_) throw std::out_of_range("map::at");
    // Deliberate: values of another group's channel before the group's are rejected.
    if (member == nullptr) return index.form == index_none ? TDMS_OK : not_found;
    member_met_ = true;
    std::uint64_t size = 0;
    if (const int status = apply(index, *member, size)) return status;
    if (member == &target_) return add_block(index, size);
    return __builtin_add_overflow(before_, size, &before_) ? not_found : TDMS_OK;
}

// The size of the member's block. It is kept for later segments that repeat the index.
int block_finder::apply(const raw_data_index& index, channel& member, std::uint64_t& size)
{
    if (!is_known_form(index.form)) return not_found;
    if (index.form == index_none) return TDMS_OK;
    if (is_explicit(index.form) && !stated_size(index, member.chunk_size)) return not_found;
    size = member.chunk_size;
    return TDMS_OK;
}

int block_finder::add_block(const raw_data_index& index, std::uint64_t size)
{
    if (index.form == index_string) {
        string_count_ = index.value_count;
        // In a file that is written to, the channel's count is that of its staged values.
        if (!target_.group->file->writable) target_.chunk_count = string_count_;
    }
    const bool strings = index.form == index_string ||
                         (index.form == index_as_before && target_.data_type == TDMS_TYPE_STRING);
    const std::uint64_t string_count = strings ? string_count_ : 0;
    if (size == 0 && string_count == 0) return target_met;
    const std::uint64_t length = segment_.raw_length;
    if (size > length || before_ > length - size) return not_found;
    found_.push_back({segment_.raw_offset + before_, size, string_count, strings});
    return target_met;
}

}  // namespace tdms_impl
