#pragma once

#include <map>
#include <string>
#include <vector>

#include "console/output.h"
#include "plotting/panels.h"

namespace tool {

/// How many curves of a panel a terminal distinguishes.
inline constexpr std::size_t curves_in_terminal_panel = 7;

/// Draws panels as text.
class terminal_drawer {
  public:
    terminal_drawer(const std::vector<panel>& panels, const std::string& time_name,
                    unsigned columns);

    /// The fewest rows that a panel takes.
    static constexpr unsigned least_rows = 9;

    /// One of the panels, in so many rows at most but no fewer than the least.
    std::string draw(const panel& p, unsigned rows) const;

  private:
    std::vector<std::string> legend_of(const panel& p) const;

    unsigned columns_;
    std::size_t left_ = 0;  // columns beside the frame
    std::map<x_kind, x_axis> axes_;
};

}  // namespace tool
