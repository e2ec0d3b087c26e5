#include "reader/value_index.h"

#include <algorithm>

namespace tdms_impl {
std::vector<block_run>::const_iterator stored_channel::run_of(std::uint64_t value) const
{
    const auto after = [](std::uint64_t v, const block_run& run) { return v < run.first; };
    return std::prev(std::upper_bound(runs_.begin(), runs_.end(), value, after));
}

void stored_channel::add_block(std::uint64_t offset, std::uint64_t values, std::uint64_t size)
{
    if (!runs_.empty()) {
        block_run& last = runs_.back();
        const std::uint64_t distance = offset - (last.offset + (last.blocks - 1) * last.distance);
        if (last.values == values && last.size == size &&
            (last.blocks == 1 || last.distance == distance)) {
            last.distance = distance;
            ++last.blocks;
            count_ += values;
            return;
        }
    }
    runs_.push_back({count_, offset, 0, 1, values, size});
    count_ += values;
}

int value_index::update(int file, std::uint64_t size)
{
    if (end_ == size) return TDMS_OK;
    // Whatever happens, the index ends up complete or empty.
    struct rollback {
        value_index* index;
        ~rollback()
        {
            if (index != nullptr) index->forget();
        }
    } on_failure{this};
    file_window window(file, size);
    const int status =
        end_ > size ? TDMS_FILE_READ : walk_segments(window, end_, size, [this](const segment& s) {
            return add_segment(s);
        });
    if (status == TDMS_OK) {
        on_failure.index = nullptr;
        seen_.forget();
    }
    return status;
}

void value_index::forget()
{
    channels_.clear();
    seen_.forget();
    end_ = 0;
}

int value_index::find(const listed_object& listed, stored_channel*& found)
{
    if (listed.parts.kind == object_kind::invalid) return TDMS_CHANNEL_READ;
    if (listed.parts.kind != object_kind::channel) return TDMS_OK;
    found = channels_.find(listed.path);
    if (found == nullptr) found = &channels_.add(listed.path).second;
    return TDMS_OK;
}

int value_index::take(const found_object<stored_channel>& found)
{
    const raw_data_index& index = found.index;
    if (found.object == nullptr) {
        if (index.form != index_none) blocks_.push_back({nullptr, 0, 0, false, false, false});
        return TDMS_OK;
    }
    stored_channel& owner = *found.object;
    const std::uint64_t count_before = owner.latest_count_;
    const bool stated_before = owner.stated_;
    if (const int status = apply_index(index, owner.data_type_, owner.latest_count_)) return status;
    if (index.form == index_none) return TDMS_OK;
    if (is_explicit(index.form)) {
        owner.stated_ = true;
        owner.strings_ = index.form == index_string;
        // stated_size() would throw for an unknown type, whose values only count as lost.
        const std::uint32_t each = DataSize.size_or_zero(index.data_type);
        owner.size_known_ = owner.strings_ || each != 0 || index.value_count == 0;
        owner.latest_size_ = index.byte_count;
        if (!owner.strings_ &&
            __builtin_mul_overflow(index.value_count, each, &owner.latest_size_)) {
            owner.latest_size_ = too_much;
        }
    }
    const bool strings = owner.strings_;
    const bool has_table = !strings || owner.latest_count_ <= owner.latest_size_ / 4;
    // A string channel states the bytes that it has; they are 0 if it was not staged.
    const bool repeated = !is_explicit(index.form) ||
                          (!strings && stated_before && owner.latest_count_ == count_before);
    blocks_.push_back({&owner, owner.latest_count_, owner.latest_size_, owner.size_known_,
                       has_table && strings == (owner.data_type_ == TDMS_TYPE_STRING), repeated});
    return TDMS_OK;
}

int value_index::add_segment(const segment& s)
{
    const auto* const known = seen_.recognise(s.metadata);
    if (known != nullptr && known->empty()) return TDMS_OK;
    // From the third time in a row, metadata states the same blocks as before; the first times,
    // other segments may have changed the counts that it is compared with.
    if (known == nullptr || seen_.in_a_row() < 3) {
        blocks_.clear();
        const int status =
            known == nullptr ? seen_.parse(s.metadata, *this) : take_all(*known, *this);
        if (status != TDMS_OK) return status;
        stated_size_ = total_size(true);
        sizes_known_ = std::all_of(blocks_.begin(), blocks_.end(),
                                   [](const stated_block& b) { return b.size_known; });
    }
    place_blocks(s);
    return TDMS_OK;
}

void value_index::place_blocks(const segment& s)
{
    // Any bytes beyond those stated are further chunks; only the first chunk counts.
    if (stated_size_ == s.raw_length || (sizes_known_ && stated_size_ < s.raw_length)) {
        add_blocks(s, [](const stated_block& b) { return b.size_known; });
    } else if (!sizes_known_) {
        // Blocks are located up to the first of unknown size.
        bool placed = stated_size_ < s.raw_length;
        add_blocks(s, [&placed](const stated_block& b) { return placed = placed && b.size_known; });
    } else if (only_timestamps()) {
        const stated_block& last = blocks_.back();
        const bool last_stored = last.size == s.raw_length;
        add_blocks(s, [&](const stated_block& b) { return last_stored && &b == &last; });
    } else {
        const bool decided = total_size(false) == s.raw_length;
        add_blocks(s, [decided](const stated_block& b) { return decided && !b.repeated; });
    }
}

std::uint64_t value_index::total_size(bool with_repeated) const
{
    std::uint64_t size = 0;
    for (const stated_block& b : blocks_) {
        if (b.size_known && (with_repeated || !b.repeated)) size = sum_of(size, b.size);
    }
    return size;
}

// Whether the segment is one of save_file() for several timestamp channels.
bool value_index::only_timestamps() const
{
    return blocks_.size() > 1 &&
           std::all_of(blocks_.begin(), blocks_.end(), [](const stated_block& b) {
               return b.owner->data_type_ == TDMS_TYPE_TIMESTAMP;
           });
}

// Adds the blocks that are stored, one after the other; the values of all others are lost.
template <class IsThere>
void value_index::add_blocks(const segment& s, IsThere is_there)
{
    std::uint64_t offset = s.raw_offset;
    for (const stated_block& b : blocks_) {
        const bool there = is_there(b);
        if (b.owner != nullptr && b.values != 0) {
            if (there && b.readable) {
                b.owner->add_block(offset, b.values, b.size);
            } else {
                b.owner->lost_ = sum_of(b.owner->lost_, b.values);
            }
        }
        if (there) offset += b.size;
    }
}

}  // namespace tdms_impl
