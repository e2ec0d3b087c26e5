#pragma once

#include <cstddef>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "plotting/axis.h"
#include "plotting/curves.h"

namespace tool {

/// Curves in one frame: of one unit and over one kind of x, or all of them bools.
struct panel {
    x_kind kind;
    std::string unit;
    bool of_bools;
    std::vector<const curve*> curves;
    double low;
    double high;
};

/// The panels for some curves, those over one kind of x together. Without a unit, curves whose
/// ranges differ by more than a factor of 100 are apart. Curves without anything to draw are left
/// out.
/// @param most curves in a panel
std::vector<panel> panels_of(const std::vector<curve>& curves, std::size_t most);

/// The x axis of all panels of one kind.
class x_axis {
  public:
    /// @param characters the axis' length
    x_axis(const std::vector<panel>& panels, x_kind kind, const std::string& time_name,
           std::size_t characters);

    axis shown{};

    /// Where a sample is on it.
    double position(const curve& c, std::int64_t x) const;

  private:
    void use_times(const std::string& name, std::int64_t first, std::int64_t last,
                   std::size_t characters);

    std::int64_t origin_ = 0;  // of times, in nanoseconds since 1970
};

/// A panel's y axis. Bools have lanes, the first curve's at the top.
axis y_axis(const panel& p, std::size_t most_ticks);

/// How high a true bool is in its lane, whose number counts from the bottom.
inline constexpr double lane_height = 0.7;

}  // namespace tool
