#pragma once

#include <cstddef>
#include <string>
#include <tdms.hpp>
#include <vector>

namespace tool {

struct tick {
    double at;
    std::string text;
};

/// A range of numbers, with labelled ticks.
struct axis {
    double low;
    double high;
    std::vector<tick> ticks;
    std::string label;

    /// The number of characters in the widest label.
    std::size_t tick_width() const;
};

/// An axis of numbers, with room at both ends.
/// @param room the room at each end, as a share of the width from `low` to `high`
/// @param if_empty the axis' width if `low` and `high` are the same
/// @param most the highest number of ticks
/// @param least the smallest distance between two ticks
axis number_axis(double low, double high, double room, double if_empty, std::size_t most,
                 double least = 0);

/// An axis of times in seconds since `first`, in the zone that times are shown in. The zone's
/// offset at the first time holds for the whole axis, which does not go back where a clock does.
/// The label has the name, the zone, and the dates unless the ticks show the day. REQUIRES: the
/// times differ.
/// @param characters the length of the axis
axis time_axis(const std::string& name, tdms::time first, tdms::time last, double room,
               std::size_t characters);

}  // namespace tool
