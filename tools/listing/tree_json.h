#pragma once

#include <string>

#include "console/json_writer.h"
#include "files/statistics.h"

namespace tool {

/// Puts a file's tree as an element of an array. The statistics are null if they are not wanted.
void put_json(json_writer& to, const std::string& name, const tdms::file& file,
              const file_statistics* statistics);

}  // namespace tool
