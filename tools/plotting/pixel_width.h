#pragma once

#include <string>
#include <string_view>

namespace tool {

/// The width of a text in pixels, in the font of a picture's labels; an overestimate rather than an
/// underestimate.
double pixel_width(std::string_view text);

/// A text that fits in so many pixels: it ends with an ellipsis where it would be wider.
std::string shortened_to_pixels(std::string_view text, double pixels);

}  // namespace tool
