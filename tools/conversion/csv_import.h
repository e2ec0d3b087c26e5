#pragma once

#include <string>

#include "files/input.h"

namespace tool {

/// Converts CSV to a measurement file. The first line has the names, as GROUP/CHANNEL; names
/// without a slash belong to the group "data". Each column gets the narrowest type that holds its
/// values, so the CSV is read twice.
/// @param name the name of the CSV file in messages
/// @param has_units whether the second line has the units
/// @param path the path of the file to write
/// @param target the name of that file in messages
/// @return a summary of the new file
std::string import_csv(const input& from, const std::string& name, bool has_units,
                       const std::string& path, const std::string& target);

}  // namespace tool
