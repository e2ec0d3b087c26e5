#pragma once

#include <optional>
#include <string>

namespace tool {

/// The kind of a picture, and its size in pixels. Without a height it is as high as its panels
/// need.
struct picture_format {
    bool is_svg;
    unsigned width;
    std::optional<unsigned> height;
};

/// The format by the target's name and a size such as 1200x800, or an empty one for the usual
/// width. Throws a usage_error if there is no such format.
picture_format picture_format_of(const std::string& target, const std::string& size);

}  // namespace tool
