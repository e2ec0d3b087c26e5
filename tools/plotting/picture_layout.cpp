#include "plotting/picture_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "console/report.h"
#include "console/text.h"
#include "plotting/pixel_width.h"

namespace tool {
namespace {

// Pixels.
constexpr double character = 7.3;  // of an axis' labels, on average
constexpr double ticks_and_label = 44;
constexpr double between_panels = 12;
constexpr double least_margin = 24;
constexpr double least_plot_width = 60;
constexpr double least_panel_height = 40;
constexpr double usual_panel_height = 200;
constexpr double usual_total = 12000;
constexpr double tallest_picture = 30000;  // that gnuplot draws

double widest_tick(const axis& a)
{
    double width = 0;
    for (const tick& t : a.ticks) width = std::max(width, pixel_width(t.text));
    return width;
}

// The height of a frame as a share of the usual one. A lane of bools needs less, but many lanes
// need more, as many curves do.
double share_of(const picture_row& row)
{
    const auto curves = static_cast<double>(row.shown->curves.size());
    if (row.shown->of_bools) return std::max(0.4, 0.2 * curves);
    return 1 + 0.075 * std::max(0.0, curves - 6);
}

double height_below(const picture_row& row)
{
    return (row.has_ticks ? ticks_and_label : 0) + between_panels;
}

}  // namespace

picture_layout::picture_layout(const std::vector<panel>& panels, const std::string& time_name,
                               const picture_format& format)
    : width_(format.width)
{
    place_sides(panels, time_name);
    for (const panel& p : panels) {
        const bool is_last = &p == &panels.back() || (&p + 1)->kind != p.kind;
        rows_.push_back({&p, legend(p, left_, plot_width_), is_last});
    }
    place_rows(format);
}

void picture_layout::place_sides(const std::vector<panel>& panels, const std::string& time_name)
{
    double tick_width = 0;
    for (const panel& p : panels) tick_width = std::max(tick_width, widest_tick(y_axis(p, 5)));
    left_ = unit_width + tick_width + 14;
    set_right_margin(least_margin);
    make_axes(panels, time_name);
    // Half of the first label and half of the last one are beside the axis.
    double beside = 0;
    for (const auto& [kind, x] : axes_) beside = std::max(beside, widest_tick(x.shown) / 2);
    left_ = std::max(left_, beside);
    set_right_margin(std::max(least_margin, beside));
    make_axes(panels, time_name);
}

void picture_layout::set_right_margin(double margin)
{
    right_margin_ = margin;
    plot_width_ = width_ - left_ - margin;
    if (plot_width_ < least_plot_width) throw failure("the picture is too narrow; see --size");
}

void picture_layout::make_axes(const std::vector<panel>& panels, const std::string& time_name)
{
    axes_.clear();
    const auto characters = static_cast<std::size_t>(plot_width_ / character);
    for (const panel& p : panels) {
        axes_.try_emplace(p.kind, panels, p.kind, time_name, characters);
    }
}

void picture_layout::place_rows(const picture_format& format)
{
    double fixed = title_height;
    double shares = 0;
    for (const picture_row& row : rows_) {
        fixed += row.names.height() + height_below(row);
        shares += share_of(row);
    }
    const double least = fixed + least_panel_height * static_cast<double>(rows_.size());
    const double usual = fixed + usual_panel_height * shares;
    height_ =
        format.height ? *format.height : std::floor(std::min(usual, std::max(least, usual_total)));
    if (height_ < least || height_ > tallest_picture) fail_to_fit(least);
    const double share_height = (height_ - fixed) / shares;
    double y = title_height;
    for (picture_row& row : rows_) {
        row.top = y + row.names.height();
        row.bottom = row.top + share_height * share_of(row);
        y = row.bottom + height_below(row);
    }
}

void picture_layout::fail_to_fit(double least_height) const
{
    std::string message = number_of(rows_.size(), "panel");
    message.append(rows_.size() == 1 ? " needs" : " need").append(" a height of ");
    message.append(with_commas(static_cast<std::uint64_t>(std::ceil(least_height))));
    message.append(" pixels");
    message += least_height > tallest_picture ? ", too much for a picture" : " (--size)";
    throw failure(message.append("; name fewer channels"));
}

}  // namespace tool
