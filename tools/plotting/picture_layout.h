#pragma once

#include <map>
#include <string>
#include <vector>

#include "plotting/legend.h"
#include "plotting/panels.h"
#include "plotting/picture_format.h"

namespace tool {

/// A panel in a picture: its legend, the frame below it, and perhaps the labels of the x axis.
struct picture_row {
    const panel* shown;
    legend names;
    bool has_ticks;  // as the last one over its kind of x
    double top = 0;  // of the frame
    double bottom = 0;
};

/// Where the parts of a picture are, in pixels from its left and its top.
class picture_layout {
  public:
    static constexpr double title_height = 34;
    static constexpr double unit_width = 28;

    /// Throws a failure if the panels do not fit.
    picture_layout(const std::vector<panel>& panels, const std::string& time_name,
                   const picture_format& format);

    double width() const { return width_; }
    double height() const { return height_; }

    /// The sides of all frames.
    double left() const { return left_; }
    double plot_width() const { return plot_width_; }
    double right_margin() const { return right_margin_; }

    const std::vector<picture_row>& rows() const { return rows_; }
    const x_axis& x_axis_of(const picture_row& row) const { return axes_.at(row.shown->kind); }

  private:
    void place_sides(const std::vector<panel>& panels, const std::string& time_name);
    void set_right_margin(double margin);
    void make_axes(const std::vector<panel>& panels, const std::string& time_name);
    void place_rows(const picture_format& format);
    [[noreturn]] void fail_to_fit(double least_height) const;

    double width_;
    double height_ = 0;
    double left_ = 0;
    double right_margin_ = 0;
    double plot_width_ = 0;
    std::map<x_kind, x_axis> axes_;
    std::vector<picture_row> rows_;
};

}  // namespace tool
