#pragma once

#include <string>

#include "commands/commands.h"
#include "commands/plot_report.h"
#include "files/input.h"
#include "plotting/curves.h"

namespace tool {

/// The fewest columns that a curve's samples are kept for.
inline constexpr unsigned least_columns = 512;

/// What is shared by all ways to draw: the file, the channels to draw and what is reported.
class plot_source {
  public:
    explicit plot_source(const plot_options& wanted);

    const input& from() const { return from_; }
    plot_report& reports() { return reports_; }
    const time_limits& limits() const { return limits_; }

    /// The name of the file, as a title.
    std::string title() const;

    /// The channels that are wanted and can be drawn; the others are reported.
    std::vector<selected_channel> drawable(const tdms::file& file);

    /// Reads what is new, and reports what cannot be read or drawn.
    void read(curve_set& curves);

  private:
    const plot_options& wanted_;
    input from_;
    time_limits limits_;
    plot_report reports_;
};

}  // namespace tool
