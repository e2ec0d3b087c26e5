#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plotting/panels.h"

namespace tool {

/// What a picture is to be; in pixels, with no height as high as its panels need.
struct picture_format {
    bool is_svg;
    unsigned width;
    std::optional<unsigned> height;
};

/// The format for a target's name and a size, such as 1200x800; empty for one that fits. Throws a
/// usage_error if there can be no such picture.
picture_format picture_format_of(const std::string& target, const std::string& size);

/// The script by which gnuplot draws panels, one below the other, in a picture. Throws a failure if
/// they do not fit.
std::string picture_script(const std::vector<panel>& panels, const std::string& title,
                           const std::string& time_name, const picture_format& format);

/// How many curves of a panel are distinguished.
inline constexpr std::size_t curves_in_picture_panel = 24;

}  // namespace tool
