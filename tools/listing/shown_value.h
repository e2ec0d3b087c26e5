#pragma once

#include <string>
#include <tdms.hpp>

namespace tool {

/// How a listing shows a value: strings in quotes.
std::string shown_value(const tdms::property_value& value);

/// A name in a listing, where an empty one would not be seen.
std::string shown_name(const std::string& name);

/// The first and the last of some times.
std::string span_text(tdms::time first, tdms::time last);

}  // namespace tool
