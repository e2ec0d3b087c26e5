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
    /// Appends the curves' data to a script, before the commands that draw.
    /// @param number of the panel in the script
    /// @param few so many samples show as points on the line
    panel_plot(std::string& script, const panel& p, const x_axis& x, std::size_t number,
               std::uint64_t few);

    /// Appends the command that plots them.
    /// @param line_style, point_style append how the curve of an index is drawn
    template <class LineStyle, class PointStyle>
    void append_to(std::string& script, LineStyle line_style, PointStyle point_style) const
    {
        const char* separator = "plot ";
        for (std::size_t i = 0; i != elements_.size(); ++i) {
            const element& e = elements_[i];
            script.append(separator).append(e.name).append(e.steps ? " with steps "
                                                                   : " with lines ");
            script.append(line_style(i)).append(" notitle");
            separator = ", ";
            if (e.has_points) {
                script.append(separator).append(e.name).append("points with points ");
                script.append(point_style(i)).append(" notitle");
            }
        }
        script += '\n';
    }

  private:
    struct element {
        std::string name;  // of the data
        bool steps;
        bool has_points;
    };

    std::vector<element> elements_;
};

/// A curve's name as it is shown; in so many characters.
std::string shown_label(const curve& c, std::size_t width);

/// Appends the commands for the axes' ranges and ticks.
void append_axes(std::string& script, const axis& x, bool x_has_labels, const axis& y);

}  // namespace tool
