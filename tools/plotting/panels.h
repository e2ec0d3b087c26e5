#pragma once

#include <cstddef>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "plotting/axis.h"
#include "plotting/curves.h"

namespace tool {

/// Curves in one frame. They have the same unit and the same kind of x axis, and all or none are
/// bools.
struct panel {
    x_kind kind;
    std::string unit;
    bool of_bools;
    std::vector<const curve*> curves;
    double low;
    double high;
};

/// Groups curves in panels, ordered by the kind of x axis. Curves without a unit are in separate
/// panels if their ranges differ by more than a factor of 100. Curves without anything to draw are
/// left out.
/// @param most the highest number of curves in a panel
std::vector<panel> panels_of(const std::vector<curve>& curves, std::size_t most);

/// The x axis that all panels of one kind share.
class x_axis {
  public:
    /// @param characters the length of the axis
    x_axis(const std::vector<panel>& panels, x_kind kind, const std::string& time_name,
           std::size_t characters);

    axis shown{};

    /// The position of a sample on the axis.
    double position(const curve& c, std::int64_t x) const;

  private:
    void use_times(const std::string& name, std::int64_t first, std::int64_t last,
                   std::size_t characters);

    std::int64_t origin_ = 0;  // of times, in nanoseconds since 1970
};

/// The y axis of a panel. Bools have a lane each, the first curve at the top.
axis y_axis(const panel& p, std::size_t most_ticks);

/// The height of `true` in the lane of a bool. Lanes have a height of 1.
inline constexpr double lane_height = 0.7;

}  // namespace tool
