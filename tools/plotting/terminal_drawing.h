#pragma once

#include <map>
#include <string>
#include <vector>

#include "console/output.h"
#include "plotting/panels.h"

namespace tool {

/// How many curves of a panel can be distinguished on a terminal.
inline constexpr std::size_t curves_in_terminal_panel = 7;

/// Draws panels as text.
class terminal_drawer {
  public:
    terminal_drawer(const std::vector<panel>& panels, const std::string& time_name,
                    unsigned columns);

    /// The smallest number of rows for a panel.
    static constexpr unsigned least_rows = 9;

    /// Draws one of the panels in at most `rows` rows, or in least_rows if these are more.
    std::string draw(const panel& p, unsigned rows) const;

  private:
    std::vector<std::string> legend_of(const panel& p) const;

    unsigned columns_;
    std::size_t left_ = 0;  // columns beside the frame
    std::map<x_kind, x_axis> axes_;
};

}  // namespace tool
