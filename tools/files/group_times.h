#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tdms.hpp>

#include "files/measurement_file.h"

namespace tool {

/// The channel with the times of a group's samples: of the timestamp channels that have a time for
/// each of `count` samples the one that is named "time", otherwise the first. A recording that was
/// killed may have more times than samples.
std::optional<selected_channel> time_channel_of(const tdms::group& g, std::uint64_t count);

/// time_channel_of(); throws a failure if there is none.
selected_channel required_times(const tdms::group& g, std::uint64_t count);

/// The samples per second that the property "sampling rate" of a channel states, or else that of
/// its group; nothing if there is none greater than 0.
std::optional<double> sampling_rate_of(const selected_channel& c);

/// The number of the first time that is not before `time`, for times that ascend; reads only some.
std::uint64_t row_at(const selected_channel& times, tdms::time time);

/// Whether times ascend from one number to another, and in samples of all others.
bool ascend(const selected_channel& times, std::uint64_t first, std::uint64_t end);

/// A time in ISO 8601 format, or only its date; without an offset in the zone that times are shown
/// in. Throws a usage_error.
tdms::time time_from(const std::string& text);

}  // namespace tool
