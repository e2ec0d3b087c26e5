#pragma once

#include <vector>

#include "console/output.h"
#include "files/selected_channel.h"

namespace tool {

/// Puts a table of channels with their types, numbers of values and properties.
void put_channel_table(output& out, const std::vector<selected_channel>& channels);

}  // namespace tool
