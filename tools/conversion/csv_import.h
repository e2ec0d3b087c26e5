#pragma once

#include <string>

#include "files/input.h"

namespace tool {

/// Makes a measurement file of a file of comma-separated values. The first line has the names, as
/// GROUP/CHANNEL; names without a slash belong to the group "data". Every column gets the narrowest
/// type that holds its values, so the file is read twice.
/// @param name of the file, for what is reported
/// @param has_units whether the second line has the units
/// @param path of the file to write
/// @param target what to call that in messages
/// @return what it holds, in words
std::string import_csv(const input& from, const std::string& name, bool has_units,
                       const std::string& path, const std::string& target);

}  // namespace tool
