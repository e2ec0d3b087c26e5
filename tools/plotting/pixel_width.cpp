#include "plotting/pixel_width.h"

#include "console/text.h"

namespace tool {
namespace {

constexpr double font_size = 13.4;

// The width of the character that begins with this byte, in font sizes. The font that a viewer uses
// is not known: these are the widths in a wide one. The other bytes of a character have no width.
double relative_width(char first)
{
    constexpr std::string_view narrow = " !'(),-./:;I[\\]fijlrt|";
    constexpr std::string_view wide = "#%+<=>@MW^mw~";
    const auto byte = static_cast<unsigned char>(first);
    if (byte >= 0xe0) return 1.05;
    if (byte >= 0xc0) return 0.8;
    if (byte >= 0x80) return 0;
    if (narrow.find(first) != std::string_view::npos) return 0.42;
    if (wide.find(first) != std::string_view::npos) return 1;
    return (first >= 'A' && first <= 'Z') || first == '&' ? 0.79 : 0.645;
}

}  // namespace

double pixel_width(std::string_view text)
{
    double width = 0;
    for (const char c : text) width += relative_width(c);
    return font_size * width;
}

std::string shortened_to_pixels(std::string_view text, double pixels)
{
    std::size_t characters = width_of(text);
    std::string shown(text);
    while (characters > 1 && pixel_width(shown) > pixels) shown = shortened(text, --characters);
    return shown;
}

}  // namespace tool
