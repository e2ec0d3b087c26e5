#include "plotting/panel_script.h"

#include <algorithm>
#include <optional>

#include "console/text.h"
#include "files/time_distance.h"
#include "plotting/gnuplot.h"

namespace tool {
namespace {

// A point of a curve. A point without y interrupts the line.
struct point {
    std::int64_t x;
    std::optional<double> y;
};

// Puts the smallest and the largest value of a cell, in their order, unless they are its first or
// its last value.
template <class Put>
void put_extremes(const envelope_cell& cell, Put put)
{
    const auto put_inner = [&](std::int64_t x, double y) {
        if (y != cell.first && y != cell.last) put(x, y);
    };
    if (cell.low > cell.high) return;
    const bool falls = cell.high_x < cell.low_x;
    if (falls) put_inner(cell.high_x, cell.high);
    put_inner(cell.low_x, cell.low);
    if (!falls && cell.low != cell.high) put_inner(cell.high_x, cell.high);
}

std::vector<point> points_of(const curve& c, const x_axis& x)
{
    // The line is interrupted where nothing was measured, if the gap is wide enough to be seen.
    const double column =
        1e9 * (x.shown.high - x.shown.low) / static_cast<double>(c.trace.columns());
    const double longest_step = std::max(c.longest_step, column);
    const auto is_gap = [&](std::int64_t from, std::int64_t to) {
        return to > from && static_cast<double>(nanoseconds_between(from, to)) > longest_step;
    };
    std::vector<point> points;
    const auto put = [&points](std::int64_t at, double y) {
        const bool gap = !is_drawable(y);
        if (gap && (points.empty() || !points.back().y)) return;
        points.push_back({at, gap ? std::nullopt : std::optional(y)});
    };
    std::int64_t last_x = 0;
    for (const envelope_cell& cell : c.trace.cells()) {
        if (!points.empty() && is_gap(last_x, cell.first_x)) put(last_x, NAN);
        last_x = cell.last_x;
        put(cell.first_x, cell.first);
        put_extremes(cell, put);
        const bool is_one_sample = cell.first_x == cell.last_x && cell.first == cell.last;
        if (!is_one_sample) put(cell.last_x, cell.last);
    }
    return points;
}

// Writes points for gnuplot, on the scale of a panel. An empty line interrupts a curve.
class point_writer {
  public:
    point_writer(const x_axis& x, const curve& c, double scale, double offset)
        : x_(x), curve_(c), scale_(scale), offset_(offset)
    {
    }

    void append_to(std::string& script, const point& p) const
    {
        if (p.y) {
            script.append(gnuplot_number(x_.position(curve_, p.x))).append(" ");
            script.append(gnuplot_number(scale_ * *p.y + offset_));
        }
        script += '\n';
    }

  private:
    const x_axis& x_;
    const curve& curve_;
    double scale_;
    double offset_;
};

std::string ticks_text(const axis& a, bool labelled)
{
    std::string text = "(";
    for (const tick& t : a.ticks) {
        if (text.size() > 1) text += ", ";
        text.append(gnuplot_text(labelled ? t.text : "")).append(" ").append(gnuplot_number(t.at));
    }
    return text + ")\n";
}

std::string range_text(const axis& a)
{
    std::string text = "[";
    text.append(gnuplot_number(a.low)).append(":").append(gnuplot_number(a.high));
    return text.append("]\n");
}

}  // namespace

panel_plot::panel_plot(std::string& script, const panel& p, const x_axis& x, std::size_t number,
                       std::uint64_t few)
{
    for (std::size_t i = 0; i != p.curves.size(); ++i) {
        const curve& c = *p.curves[i];
        const auto lane = static_cast<double>(p.curves.size() - 1 - i);
        const point_writer writer(x, c, p.of_bools ? lane_height : 1, p.of_bools ? lane : 0);
        const std::vector<point> points = points_of(c, x);
        std::string name = "$panel" + std::to_string(number);
        name.append("curve").append(std::to_string(i));
        std::string shown_as_points;
        script.append(name).append(" << end\n");
        for (std::size_t k = 0; k != points.size(); ++k) {
            const bool has_left = k != 0 && points[k - 1].y;
            const bool has_right = k + 1 != points.size() && points[k + 1].y;
            const bool is_alone = !has_left && !has_right;
            writer.append_to(script, points[k]);
            if (points[k].y && (is_alone || c.trace.samples() <= few)) {
                writer.append_to(shown_as_points, points[k]);
            }
        }
        script += "end\n";
        if (!shown_as_points.empty()) {
            script.append(name).append("points << end\n").append(shown_as_points).append("end\n");
        }
        curves_.push_back({std::move(name), p.of_bools, !shown_as_points.empty()});
    }
}

// Keeps the end of a long label, which often distinguishes a channel from its neighbours.
std::string shown_label(const curve& c, std::size_t width)
{
    std::string label = printable(c.label);
    if (width_of(label) <= width) return label;
    const std::size_t kept_at_end = width / 3;
    std::string_view end = label;
    while (width_of(end) > kept_at_end || !is_utf8(end)) end.remove_prefix(1);
    return shortened(label, width - kept_at_end).append(end);
}

void append_axes(std::string& script, const axis& x, bool x_has_labels, const axis& y)
{
    script.append("set xrange ").append(range_text(x));
    script.append("set yrange ").append(range_text(y));
    script.append("set xtics nomirror ").append(ticks_text(x, x_has_labels));
    script.append("set ytics nomirror ").append(ticks_text(y, true));
}

}  // namespace tool
