#pragma once

#include <list>
#include <optional>
#include <vector>

#include "reader/string_block.h"

namespace tdms_impl {

/// The stored values of one channel: option::get_channel_data() tells where they are, read() and
/// read_strings() fetch them.
class channel_values {
  public:
    /// Locates the channel's blocks by the file's metadata alone. Closes the file's stream when a
    /// segment cannot be read.
    int locate(option& file, channel& target);

    /// Reads the first `size` bytes of what the channel's blocks hold, one after the other. Texts
    /// count with a 32-bit length in front of each.
    /// They are put `skip` bytes behind the beginning of `array`.
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
