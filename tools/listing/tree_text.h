#pragma once

#include <string>

#include "console/output.h"
#include "files/statistics.h"

namespace tool {

/// Puts the tree of a file, with a table of the channels of each group.
/// @param statistics null to leave them out
void put_tree(output& out, const std::string& name, const tdms::file& file,
              const file_statistics* statistics);

}  // namespace tool
