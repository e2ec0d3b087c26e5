#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "plotting/panels.h"

namespace tool {

/// The legend of a panel in a picture: the names of its curves, in one row or in columns. Lengths
/// are in pixels.
class legend {
  public:
    struct entry {
        std::string text;
        double x;    // of the sample of the line, which is before the name
        double row;  // counted from the top
    };

    static constexpr double line_height = 18;
    static constexpr double line_sample = 28;

    legend(const panel& p, double left, double width);

    const std::vector<entry>& entries() const { return entries_; }
    double height() const { return rows_ * line_height; }

  private:
    void place(double left, std::size_t columns, double column);

    std::vector<entry> entries_;
    double rows_ = 1;
};

}  // namespace tool
