#pragma once

#include <string>
#include <tdms.hpp>

namespace tool {

/// A time in ISO 8601 format, or only its date; without an offset it is in the zone that times are
/// shown in. Throws a usage_error if the text is no time.
tdms::time time_from(const std::string& text);

}  // namespace tool
