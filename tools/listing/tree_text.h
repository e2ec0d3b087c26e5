#pragma once

#include <string>

#include "console/output.h"
#include "files/statistics.h"

namespace tool {

/// Puts a file's tree in tables of channels. The statistics are null if they are not wanted.
void put_tree(output& out, const std::string& name, const tdms::file& file,
              const file_statistics* statistics);

}  // namespace tool
