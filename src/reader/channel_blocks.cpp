#include "reader/channel_blocks.h"

#include <algorithm>

#include "codec/metadata_bytes.h"

namespace tdms_impl {

bool channel_blocks::locate(option& file, channel& target)
{
    if (file.stream == nullptr) return false;
    window_.emplace(fileno(file.stream), file.file_size);
    block_finder finder(target, blocks_);
    std::uint64_t offset = 0;
    const int status = walk_segments(*window_, offset, file.file_size,
                                     [&finder](const segment& s) { return finder.add_segment(s); });
    return close_unreadable(file, status) == TDMS_OK;
}

bool channel_blocks::read(std::uint64_t size, unsigned char* array, std::uint64_t skip)
{
    if (std::any_of(blocks_.begin(), blocks_.end(), [](const block& b) { return b.strings; })) {
        return read_records(size, array, skip);
    }
    std::uint64_t held = 0;  // cannot wrap: the blocks do not overlap
    for (const block& b : blocks_) held += b.size;
    if (held < size) return false;
    // The file may have been truncated since it was opened.
    if (!blocks_.empty() && !window_->covers(blocks_.back().offset + blocks_.back().size))
        return false;
    unsigned char* target = array + skip;
    for (const block& b : blocks_) {
        const std::uint64_t part = std::min(b.size, size);
        if (!window_->read(b.offset, part, target)) return false;
        target += part;
        size -= part;
    }
    return true;
}

// A numeric channel may have string blocks; their length-prefixed records are decoded as numbers.
bool channel_blocks::read_records(std::uint64_t size, unsigned char* array, std::uint64_t skip)
{
    byte_vector records;
    for (const block& b : blocks_) {
        if (b.strings) {
            string_block strings;
            if (!strings.read(*window_, b)) return false;
            strings.for_each(strings.count(), [&records](const char* string, std::uint32_t length) {
                put_string(records, {string, length});
            });
            continue;
        }
        const std::size_t before = records.size();
        make_room(records, b.size);
        records.resize(before + b.size);
        if (!window_->read(b.offset, b.size, records.data() + before)) return false;
    }
    if (records.size() < size) return false;
    std::copy_n(records.begin(), size, array + skip);
    return true;
}

bool channel_blocks::read_strings(std::uint64_t count, std::list<string_block>& found)
{
    std::uint64_t held = 0;
    for (const block& b : blocks_) held += b.string_count;
    if (held < count) return false;
    for (const block& b : blocks_) {
        if (!found.emplace_back().read(*window_, b)) return false;
    }
    // Only the first `count` strings are values.
    for (string_block& b : found) {
        b.shrink(std::min(count, b.count()));
        count -= b.count();
    }
    return true;
}

}  // namespace tdms_impl
