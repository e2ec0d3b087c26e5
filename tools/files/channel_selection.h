#pragma once

#include <string>
#include <tdms.hpp>
#include <vector>

#include "files/selected_channel.h"

namespace tool {

/// The channels that are wanted; all if there are no names. A name is GROUP/CHANNEL, or else GROUP
/// for all channels in it, either as in the file or as written by as_argument(). Throws a
/// usage_error, with a suggestion, if there is no such channel or group.
std::vector<selected_channel> select(const tdms::file& file, const std::vector<std::string>& names);

}  // namespace tool
