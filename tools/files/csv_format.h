#pragma once

#include <string_view>

#include "console/output.h"

namespace tool {

/// How CSV is written.
struct csv_format {
    char separator = ',';
    bool decimal_comma = false;
    const char* end_of_line = "\n";
};

/// Puts a field. It is quoted if it contains a separator, a quote or an end of line, or if it is
/// empty: without quotes an empty string would look like a missing value.
void put_field(output& out, std::string_view text, const csv_format& format);

}  // namespace tool
