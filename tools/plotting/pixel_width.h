#pragma once

#include <string>
#include <string_view>

namespace tool {

/// The pixels that a text needs in a picture, in the font of its labels; rather too many than too
/// few.
double pixel_width(std::string_view text);

/// A text as it can be shown in so many pixels: with an ellipsis where it would take more.
std::string shortened_to_pixels(std::string_view text, double pixels);

}  // namespace tool
