#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The texts of a channel, one behind the other.
struct text_values {
    std::string bytes;
    std::vector<std::size_t> ends;

    std::string_view at(std::size_t i) const
    {
        const std::size_t begin = i == 0 ? 0 : ends[i - 1];
        return std::string_view(bytes).substr(begin, ends[i] - begin);
    }
};

/// Reads a string channel in a process of its own: of all texts that a process reads, the library
/// hands out the first ones, so that each string channel needs one. Throws a failure.
text_values read_texts_apart(void* channel, std::uint64_t count);

}  // namespace tool
