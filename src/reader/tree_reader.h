#pragma once

#include <string>

#include "core/object_model.h"

namespace tdms {

/// Opens the file at `path` for reading and builds the tree of its groups, channels and properties
/// in `file`, which is fresh. No values are read. The stream stays open, except on TDMS_FILE_READ.
int read_tree(option& file, const std::string& path);

}  // namespace tdms
