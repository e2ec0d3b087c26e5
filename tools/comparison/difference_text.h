#pragma once

#include <string>
#include <tdms.hpp>
#include <type_traits>

#include "console/value_text.h"

namespace tool {

/// Two strings that differ; from long ones, what precedes and follows the difference is left out.
std::string excerpts(const std::string& a, const std::string& b);

/// The text of a number of any type. Integers that are no doubles fit in 64 bits.
std::string text_of_any(long double value);

/// Two values that differ, as a report shows them.
template <class T>
std::string both(const T& a, const T& b)
{
    if constexpr (std::is_same_v<T, std::string>) {
        return excerpts(a, b);
    } else if constexpr (std::is_same_v<T, long double>) {
        return text_of_any(a) + " and " + text_of_any(b);
    } else {
        return text_of(a) + " and " + text_of(b);
    }
}

/// The type and the value of a property.
std::string with_type_name(const tdms::property_value& value);

}  // namespace tool
