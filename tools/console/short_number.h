#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "console/value_text.h"

namespace tool {

/// A number with that many significant digits; numbers with more digits before the point, up to
/// 1e15, as integers instead of with an exponent.
inline std::string short_number(double value, int digits = 6)
{
    if (std::isnan(value)) return "nan";  // whatever its sign
    const double size = std::abs(value);
    const bool is_integer = size + 0.5 >= std::pow(10.0, digits) && size < 1e15;
    std::array<char, longest_value> text;
    const auto format = is_integer ? std::chars_format::fixed : std::chars_format::general;
    return {text.begin(),
            std::to_chars(text.begin(), text.end(), value, format, is_integer ? 0 : digits).ptr};
}

}  // namespace tool
