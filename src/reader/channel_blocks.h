#pragma once

#include <list>
#include <optional>
#include <vector>

#include "reader/string_block.h"

namespace tdms_impl {

/// All stored values of one channel, as the first interface reads them.
class channel_blocks {
  public:
    /// Locates the blocks by the file's metadata alone, from its beginning. Closes the file's
    /// stream when a segment cannot be read. @return whether all could be located
    bool locate(option& file, channel& target);

    /// Reads the first `size` bytes of what the blocks hold, one after the other, to `skip` bytes
    /// after the beginning of `array`. Strings count with a 32-bit length before each.
    /// @return whether there are as many; if not, the array is untouched, unless the device failed
    bool read(std::uint64_t size, unsigned char* array, std::uint64_t skip);

    /// Reads the first `count` strings into an empty list. @return whether there are as many, in
    /// sound blocks
    bool read_strings(std::uint64_t count, std::list<string_block>& found);

  private:
    bool read_records(std::uint64_t size, unsigned char* array, std::uint64_t skip);

    std::optional<file_window> window_;
    std::vector<block> blocks_;
};

}  // namespace tdms_impl
