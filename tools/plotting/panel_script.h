#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "plotting/panels.h"

namespace tool {

/// The plot elements of a panel's curves.
class panel_plot {
  public:
    /// Appends the data of the curves to a script.
    /// @param number the number of the panel in the script
    /// @param few curves of at most so many samples show them as points on the line
    panel_plot(std::string& script, const panel& p, const x_axis& x, std::size_t number,
               std::uint64_t few);

    /// Appends the command that draws the curves.
    /// @param line_style, point_style return the style of the curve with an index
    template <class LineStyle, class PointStyle>
    void append_to(std::string& script, LineStyle line_style, PointStyle point_style) const
    {
        const char* separator = "plot ";
        for (std::size_t i = 0; i != curves_.size(); ++i) {
            const drawn_curve& c = curves_[i];
            script.append(separator).append(c.name).append(c.steps ? " with steps "
                                                                   : " with lines ");
            script.append(line_style(i)).append(" notitle");
            separator = ", ";
            if (c.has_points) {
                script.append(separator).append(c.name).append("points with points ");
                script.append(point_style(i)).append(" notitle");
            }
        }
        script += '\n';
    }

  private:
    struct drawn_curve {
        std::string name;  // of the data
        bool steps;
        bool has_points;
    };

    std::vector<drawn_curve> curves_;
};

/// The label of a curve, shortened to a width in characters.
std::string shown_label(const curve& c, std::size_t width);

/// Appends the commands for the axes' ranges and ticks.
void append_axes(std::string& script, const axis& x, bool x_has_labels, const axis& y);

}  // namespace tool
