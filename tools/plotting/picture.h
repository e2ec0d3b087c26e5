#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "plotting/panels.h"
#include "plotting/picture_format.h"

namespace tool {

/// The script by which gnuplot draws panels, one below the other, in a picture. Throws a failure if
/// they do not fit.
std::string picture_script(const std::vector<panel>& panels, const std::string& title,
                           const std::string& time_name, const picture_format& format);

/// How many curves of a panel can be distinguished.
inline constexpr std::size_t curves_in_picture_panel = 24;

}  // namespace tool
