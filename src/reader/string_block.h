#pragma once

#include "codec/byte_order.h"
#include "reader/block_finder.h"

namespace tdms_impl {

/// The strings of one block of a file, as append_strings() encodes them, each with a NUL after it.
/// Their addresses stay the same until the object moves.
class string_block {
  public:
    /// Reads a block of strings. @return whether the file has it, and the ends in its table ascend
    /// and stay within the block
    bool read(file_window& window, const block& where);

    std::uint64_t count() const { return count_; }
    /// Drops all but the first `count` strings.
    void shrink(std::uint64_t count) { count_ = count; }

    /// Calls `use(string, length)` for the first `count` strings.
    template <class Use>
    void for_each(std::uint64_t count, Use use) const
    {
        const unsigned char* const strings = bytes_.data() + table_size_;
        std::uint32_t begin = 0;
        for (std::uint64_t i = 0; i != count; ++i) {
            const std::uint32_t end = end_of(i);
            use(reinterpret_cast<const char*>(strings + begin + i), end - begin);
            begin = end;
        }
    }

  private:
    std::uint32_t end_of(std::uint64_t i) const
    {
        return load<std::uint32_t>(bytes_.data() + 4 * i, true);
    }
    bool table_is_sound(std::uint64_t strings_size) const;

    byte_vector bytes_;  // the block's table, then the strings
    std::size_t table_size_ = 0;
    std::uint64_t count_ = 0;
};

}  // namespace tdms_impl
