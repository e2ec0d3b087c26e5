#include "reader/string_block.h"

#include "codec/string_terminator.h"

namespace tdms_impl {

bool string_block::read(file_window& window, const block& where)
{
    // Each string takes four bytes of the table.
    if (where.string_count > where.size / 4) return false;
    count_ = where.string_count;
    table_size_ = 4 * count_;
    const std::uint64_t strings_size = where.size - table_size_;
    bytes_.resize(where.size + count_);
    unsigned char* const front = bytes_.data() + table_size_;
    unsigned char* const strings = front + count_;
    if (!window.read(where.offset, table_size_, bytes_.data())) return false;
    if (!window.read(where.offset + table_size_, strings_size, strings)) return false;
    if (!table_is_sound(strings_size)) return false;
    string_terminator terminator(front, strings);
    std::uint32_t begin = 0;
    for (std::uint64_t i = 0; i != count_; ++i) {
        const std::uint32_t end = end_of(i);
        terminator.move(end - begin);
        begin = end;
    }
    return true;
}

bool string_block::table_is_sound(std::uint64_t strings_size) const
{
    std::uint32_t begin = 0;
    bool rises = true;
    for (std::uint64_t i = 0; i != count_; ++i) {
        const std::uint32_t end = end_of(i);
        rises &= end >= begin;
        begin = end;
    }
    return rises && begin <= strings_size;
}

}  // namespace tdms_impl
