#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "console/value_text.h"

namespace tool {

/// A number to that many digits, and an integer below 1e15 without an exponent.
inline std::string short_number(double value, int digits = 6)
{
    if (std::isnan(value)) return "nan";  // whatever its sign
    const double size = std::abs(value);
    const bool whole = size + 0.5 >= std::pow(10.0, digits) && size < 1e15;
    std::array<char, longest_value> text;
    const auto format = whole ? std::chars_format::fixed : std::chars_format::general;
    return {text.begin(),
            std::to_chars(text.begin(), text.end(), value, format, whole ? 0 : digits).ptr};
}

}  // namespace tool
