#pragma once

#include <cstdint>
#include <optional>
#include <tdms.hpp>

#include "files/selected_channel.h"

namespace tool {

/// The channel with the times of a group's samples: among the timestamp channels that have a time
/// for each of `count` samples, the one named "time", or else the first. A recording that was
/// killed may have more times than samples.
std::optional<selected_channel> time_channel_of(const tdms::group& g, std::uint64_t count);

/// As time_channel_of(); throws a failure if there is none.
selected_channel required_times(const tdms::group& g, std::uint64_t count);

/// The samples per second, from the property "sampling rate" of a channel or else of its group;
/// none unless it is greater than 0.
std::optional<double> sampling_rate_of(const selected_channel& c);

/// The row of the first time that is not before `time`. REQUIRES: the times ascend. Reads only a
/// few of them.
std::uint64_t row_at(const selected_channel& times, tdms::time time);

/// Whether the times of rows `first` to `end` - 1 ascend, and those of some samples of all rows.
bool ascend(const selected_channel& times, std::uint64_t first, std::uint64_t end);

}  // namespace tool
