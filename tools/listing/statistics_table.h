#pragma once

#include <vector>

#include "console/output.h"
#include "files/selected_channel.h"
#include "files/statistics.h"

namespace tool {

/// Puts a table of the statistics of channels.
void put_statistics_table(output& out, const std::vector<selected_channel>& channels,
                          const std::vector<channel_statistics>& statistics);

}  // namespace tool
