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

struct axis {
    double low;
    double high;
    std::vector<tick> ticks;
    std::string label;

    /// The characters that the widest tick takes.
    std::size_t tick_width() const;
};

/// An axis of numbers, with room at both ends.
/// @param room the share of its width at each end, or half of `if_empty` if it has no width
/// @param most how many ticks at most
/// @param least the least distance between two of them
axis number_axis(double low, double high, double room, double if_empty, std::size_t most,
                 double least = 0);

/// An axis of times in seconds since `first`, in the zone that times are shown in. That zone's
/// offset at the first time is the whole axis', which does not go back where a clock does. The
/// label, after `name`, has the zone, and the dates if the ticks leave out the day. REQUIRES: the
/// times differ.
/// @param characters the axis' length
axis time_axis(const std::string& name, tdms::time first, tdms::time last, double room,
               std::size_t characters);

}  // namespace tool
