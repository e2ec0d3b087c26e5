#pragma once

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "files/measurement_file.h"

namespace tool {

/// The times of a group's samples, in seconds since 1970-01-01T00:00:00 UTC.
struct time_axis {
    std::string name;
    nanoseconds first;
    std::vector<double> seconds;
};

struct curve {
    const group* owner;
    std::string name;
    std::string unit;
    std::vector<double> values;
};

using time_axes = std::map<const group*, time_axis>;

/// Whether a value is a number small enough that an axis width cannot overflow.
inline bool is_drawable(double value)
{
    return std::abs(value) <= 1e300;
}

/// Throws a usage_error if no picture can have that name. An empty one means the terminal.
void check_picture_name(const std::string& target);

/// The script by which gnuplot draws the curves, over the times of their groups, or over the
/// samples' numbers if there are no times.
std::string plot_script(const std::vector<curve>& curves, const time_axes& times,
                        const std::string& title, const std::string& target);

}  // namespace tool
