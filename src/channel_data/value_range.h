#pragma once

#include <algorithm>
#include <array>

#include "reader/stored_values.h"

namespace tdms_impl {

/// How many bytes readers that need a buffer take at once.
inline constexpr std::size_t most_at_once = 65536;

inline int check_range(const stored_values& values, std::uint64_t first, std::uint64_t count)
{
    const std::uint64_t there = values.count();
    return first > there || count > there - first ? TDMS_RANGE : TDMS_OK;
}

/// A range of a channel's stored values that is to be read.
class value_range {
  public:
    value_range(const stored_values& values, std::uint64_t first, std::uint64_t count)
        : values_(values), first_(first), count_(count), window_(values.file, values.file_size)
    {
    }

    /// Reads the stored bytes. The last ones are read first, into a buffer: if the file no longer
    /// holds them, the caller's array stays untouched. Checking the file's size would be one more
    /// system call.
    int read(std::uint32_t value_size, unsigned char* target)
    {
        std::array<unsigned char, most_apart> last;
        const last_values found = find_last();
        const std::uint64_t apart = std::min(found.in_block, last.size() / value_size);
        const std::uint64_t last_size = apart * value_size;
        const std::uint64_t end = found.block + found.end * value_size;
        if (!window_.read(end - last_size, last_size, last.data())) return TDMS_CHANNEL_DATA_READ;
        const auto read_part = [&](std::uint64_t offset, std::uint64_t size) {
            const bool got = window_.read(offset, size, target);
            target += size;
            return got ? TDMS_OK : TDMS_CHANNEL_DATA_READ;
        };
        if (const int status = for_each_part(count_ - apart, read_part, value_size)) return status;
        std::copy_n(last.data(), last_size, target);
        return TDMS_OK;
    }

    /// Calls `use(bytes, count)` for the stored bytes of the values, some values at a time.
    template <class Use>
    int read_piecemeal(std::uint32_t value_size, Use use)
    {
        const last_values last = find_last();
        if (!window_.covers(last.block + last.end * value_size)) return TDMS_CHANNEL_DATA_READ;
        return for_each_part(
            count_,
            [&](std::uint64_t offset, std::uint64_t size) -> int {
                while (size != 0) {
                    const std::uint64_t part = std::min<std::uint64_t>(size, most_at_once);
                    const unsigned char* const bytes = window_.view(offset, part);
                    if (bytes == nullptr) return TDMS_CHANNEL_DATA_READ;
                    use(bytes, part / value_size);
                    offset += part;
                    size -= part;
                }
                return TDMS_OK;
            },
            value_size);
    }

  private:
    static constexpr std::size_t most_apart = 8192;

    // Where the range ends.
    struct last_values {
        std::uint64_t block;     // offset in the file
        std::uint64_t end;       // number of values from there to the end of the range
        std::uint64_t in_block;  // how many of them are in the range
    };

    last_values find_last() const
    {
        last_values found{};
        values_.channel->for_each_block(
            first_ + count_ - 1, 1,
            [&](const block_run&, std::uint64_t block, std::uint64_t skipped, std::uint64_t) {
                const std::uint64_t end = skipped + 1;
                found = {block, end, std::min(end, count_)};
                return TDMS_OK;
            });
        return found;
    }

    // Calls `use(offset, size)` for the stored bytes of the first `count` values, block by block.
    template <class Use>
    int for_each_part(std::uint64_t count, Use use, std::uint32_t value_size)
    {
        return values_.channel->for_each_block(
            first_, count,
            [&](const block_run&, std::uint64_t offset, std::uint64_t skipped, std::uint64_t part) {
                return use(offset + skipped * value_size, part * value_size);
            });
    }

    const stored_values& values_;
    std::uint64_t first_;
    std::uint64_t count_;
    file_window window_;
};

}  // namespace tdms_impl
