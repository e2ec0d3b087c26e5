#pragma once

#include <string>

#include "console/json_writer.h"
#include "files/statistics.h"

namespace tool {

/// Puts the tree of a file as an element of an array.
/// @param statistics null to leave them out
void put_json(json_writer& to, const std::string& name, const tdms::file& file,
              const file_statistics* statistics);

}  // namespace tool
