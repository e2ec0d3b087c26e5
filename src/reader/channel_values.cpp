#include "reader/channel_values.h"

#include <algorithm>

#include "core/handles.h"

namespace tdms {

int channel_values::locate(option& file, channel& target)
{
    if (file.stream == nullptr) return TDMS_FILE_READ;
    window_.emplace(fileno(file.stream), file.file_size);
    block_finder finder(target, blocks_);
    std::uint64_t offset = 0;
    return close_unreadable(
        file, walk_segments(*window_, offset, file.file_size,
                            [&finder](const segment& s) { return finder.add_segment(s); }));
}

bool channel_values::read(std::uint64_t size, unsigned char* array, std::uint64_t skip)
{
    if (std::any_of(blocks_.begin(), blocks_.end(), [](const block& b) { return b.texts; })) {
        return read_records(size, array, skip);
    }
    std::uint64_t held = 0;  // cannot wrap: the blocks lie apart in one file
    for (const block& b : blocks_) held += b.size;
    if (held < size) return false;
    // The file may have become shorter since it was opened.
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

// Calls visit(first byte, length) for every text of the block.
// @return whether the block can be read, and its offsets neither fall nor run past its end
template <class Visit>
bool channel_values::visit_texts(const block& where, Visit visit)
{
    if (where.text_count > where.size / 4) return false;
    const unsigned char* const table = window_->view(where.offset, where.size);
    if (table == nullptr) return false;
    const unsigned char* const texts = table + 4 * where.text_count;
    const std::uint64_t texts_size = where.size - 4 * where.text_count;
    std::uint32_t begin = 0;
    for (std::uint64_t i = 0; i != where.text_count; ++i) {
        const auto end = load<std::uint32_t>(table + 4 * i, true);
        if (end < begin || end > texts_size) return false;
        visit(texts + begin, end - begin);
        begin = end;
    }
    return true;
}

// A channel of numbers may claim blocks of texts; then their records are what is decoded.
bool channel_values::read_records(std::uint64_t size, unsigned char* array, std::uint64_t skip)
{
    byte_vector records;
    for (const block& b : blocks_) {
        const auto add_record = [&records](const unsigned char* text, std::uint32_t length) {
            unsigned char prefix[4];
            store(prefix, length, true);
            append(records, prefix, sizeof prefix);
            append(records, text, length);
        };
        if (b.texts) {
            if (!visit_texts(b, add_record)) return false;
            continue;
        }
        const unsigned char* const bytes = window_->view(b.offset, b.size);
        if (bytes == nullptr) return false;
        append(records, bytes, b.size);
    }
    if (records.size() < size) return false;
    std::copy_n(records.begin(), size, array + skip);
    return true;
}

bool channel_values::read_texts(std::uint64_t count, text_list& out)
{
    std::uint64_t held = 0;
    for (const block& b : blocks_) {
        // Each text takes four bytes of the block's table.
        if (b.text_count > b.size / 4) return false;
        held += b.text_count;
    }
    if (held < count) return false;
    out.texts.reserve(held);
    for (const block& b : blocks_) {
        // The texts, and a NUL for each in place of its table entry.
        const std::uint64_t room = b.size - 3 * b.text_count;
        out.memory.push_back(std::make_unique_for_overwrite<char[]>(room));
        char* next = out.memory.back().get();
        const auto add_text = [&out, &next](const unsigned char* text, std::uint32_t length) {
            out.texts.push_back(next);
            next = std::copy_n(reinterpret_cast<const char*>(text), length, next);
            *next++ = '\0';
        };
        if (!visit_texts(b, add_text)) return false;
    }
    out.texts.resize(count);
    return true;
}

int option::get_channel_data(const void* handle, channel_values& values)
{
    channel* target = nullptr;
    if (const int status = find_object(*this, *static_cast<const channel*>(handle), target)) {
        return status;
    }
    return values.locate(*this, *target);
}

}  // namespace tdms
