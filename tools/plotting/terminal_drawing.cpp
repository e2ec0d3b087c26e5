#include "plotting/terminal_drawing.h"

#include <algorithm>

#include "console/text.h"
#include "plotting/gnuplot.h"
#include "plotting/panel_script.h"

namespace tool {
namespace {

// The characters with which gnuplot draws the lines.
constexpr std::string_view pens = "*#$%@&=";
static_assert(pens.size() == curves_in_terminal_panel);

constexpr unsigned rows_below = 2;  // below the frame
constexpr unsigned right_margin = 2;
constexpr unsigned narrowest = 40;

std::size_t most_ticks(std::size_t rows)
{
    return rows / 3;
}

// A drawing without blanks at the ends of its lines.
std::string trimmed(std::string_view drawing)
{
    std::string text;
    while (!drawing.empty()) {
        const std::size_t end = std::min(drawing.find('\n'), drawing.size());
        const std::string_view line = drawing.substr(0, end);
        text.append(line.substr(0, line.find_last_not_of(' ') + 1)).append("\n");
        drawing.remove_prefix(std::min(end + 1, drawing.size()));
    }
    return text;
}

}  // namespace

terminal_drawer::terminal_drawer(const std::vector<panel>& panels, const std::string& time_name,
                                 unsigned columns)
    : columns_(std::max(columns, narrowest))
{
    for (const panel& p : panels) left_ = std::max(left_, y_axis(p, 8).tick_width() + 2);
    for (const panel& p : panels) {
        axes_.try_emplace(p.kind, panels, p.kind, time_name, columns_ - left_ - right_margin);
    }
}

// The character and the label of each curve, then the unit, on as many lines as needed.
std::vector<std::string> terminal_drawer::legend_of(const panel& p) const
{
    std::vector<std::string> lines{""};
    const auto put = [&](const std::string& entry) {
        if (!lines.back().empty() && width_of(lines.back()) + 3 + width_of(entry) > columns_) {
            lines.emplace_back();
        }
        lines.back().append(lines.back().empty() ? "  " : "   ").append(entry);
    };
    for (std::size_t i = 0; i != p.curves.size(); ++i) {
        std::string entry(1, pens[i]);
        put(entry.append(" ").append(shown_label(*p.curves[i], columns_ - 6)));
    }
    const std::string unit = shortened(printable(p.unit), 20);
    if (!unit.empty()) put('[' + unit + ']');
    return lines;
}

std::string terminal_drawer::draw(const panel& p, unsigned rows) const
{
    const std::vector<std::string> legend = legend_of(p);
    const std::size_t taken = std::min<std::size_t>(rows, legend.size());
    const std::size_t height = std::max<std::size_t>(rows - taken, least_rows - 1);
    const axis& x = axes_.at(p.kind).shown;
    std::string script = "set encoding utf8\nset terminal dumb nofeed noenhanced mono size ";
    script.append(std::to_string(columns_)).append(",").append(std::to_string(height));
    script.append("\nunset key\nset tmargin 0\nset bmargin ").append(std::to_string(rows_below));
    script.append("\nset rmargin ").append(std::to_string(right_margin));
    script.append("\nset lmargin ").append(std::to_string(left_)).append("\n");
    const panel_plot plot(script, p, axes_.at(p.kind), 0, 0);
    append_axes(script, x, true, y_axis(p, most_ticks(height)));
    script.append("set xlabel ").append(gnuplot_text(x.label)).append("\n");
    const auto point_style = [](std::size_t i) {
        return std::string("pointtype '") + pens[i] + '\'';
    };
    const auto line_style = [](std::size_t i) { return "linetype " + std::to_string(i + 1); };
    plot.append_to(script, line_style, point_style);
    std::string drawing;
    run_gnuplot(script, [&drawing](std::string_view text) { drawing += text; });
    std::erase(drawing, '\f');
    std::string text;
    for (const std::string& line : legend) text.append(line).append("\n");
    return text + trimmed(drawing);
}

}  // namespace tool
