#pragma once

#include <string>
#include <string_view>

#include "console/output.h"

namespace tool {

/// How a file of comma-separated values is written.
struct csv_format {
    char separator = ',';
    bool decimal_comma = false;
    const char* end_of_line = "\n";
};

/// Puts a field. One with a separator, a quote or an end of line in it is quoted, and so is an
/// empty string, which would look like the missing value of a shorter channel.
void put_field(output& out, std::string_view text, const csv_format& format);

}  // namespace tool
