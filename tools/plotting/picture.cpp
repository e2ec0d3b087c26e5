#include "plotting/picture.h"

#include <algorithm>
#include <array>

#include "console/text.h"
#include "console/value_text.h"
#include "plotting/gnuplot.h"
#include "plotting/panel_script.h"
#include "plotting/picture_layout.h"
#include "plotting/pixel_width.h"

namespace tool {
namespace {

constexpr std::array colors{"#1f5fa8", "#c8442b", "#2e8b3d", "#b07800", "#7b4ea3", "#00a5b5",
                            "#8d5524", "#4d4d4d", "#e377c2", "#8a9a00", "#5aa9f0", "#000000"};
constexpr std::array dashes{"1", "(16,8)"};
static_assert(colors.size() * dashes.size() >= curves_in_picture_panel);

constexpr double title_size = 1.25;  // of the labels' font
constexpr std::uint64_t few_samples = 50;

std::string line_style(std::size_t index)
{
    std::string style = "linecolor rgb '";
    style.append(colors.at(index % colors.size())).append("' linewidth 1.2 dashtype ");
    return style.append(dashes.at(index / colors.size() % dashes.size()));
}

std::string point_style(std::size_t index)
{
    std::string style = "linecolor rgb '";
    return style.append(colors.at(index % colors.size())).append("' pointtype 7 pointsize 0.4");
}

// Quotes the text of a label. gnuplot escapes what XML reserves, except for "]]>".
std::string label_text(std::string text)
{
    for (std::size_t at = 0; (at = text.find("]]>", at)) != std::string::npos;) {
        text.insert(at + 2, "\u200B");  // a space without width
    }
    return gnuplot_text(text);
}

// Writes the script of a picture.
class picture {
  public:
    picture(const picture_layout& layout, const std::string& title, const picture_format& format)
        : layout_(layout), title_(title), format_(format)
    {
    }

    std::string script() const
    {
        std::string script = "set encoding utf8\nset terminal ";
        script.append(format_.is_svg ? "svg" : "pngcairo").append(" noenhanced size ");
        script.append(std::to_string(format_.width)).append(",").append(text_of(layout_.height()));
        script += format_.is_svg ? " font 'sans-serif,13'" : " font 'sans,10'";
        script +=
            " background '#ffffff'\n"
            "unset key\n"
            "set grid xtics ytics linetype 1 linecolor rgb '#d8d8d8' linewidth 0.5\n"
            "set border linecolor rgb '#606060'\n"
            "set tics textcolor rgb '#000000'\n";
        std::vector<panel_plot> plots;
        for (const picture_row& row : layout_.rows()) {
            plots.emplace_back(script, *row.shown, layout_.x_axis_of(row), plots.size(),
                               few_samples);
        }
        script += "set multiplot\n";
        for (std::size_t i = 0; i != layout_.rows().size(); ++i) {
            put_frame(script, layout_.rows()[i]);
            if (i == 0) put_title(script);
            plots[i].append_to(script, line_style, point_style);
        }
        return script + "unset multiplot\n";
    }

  private:
    std::string at(double x, double y) const
    {
        std::string text = "screen " + text_of(x / layout_.width());
        return text.append(", screen ").append(text_of(1 - y / layout_.height()));
    }

    void put_title(std::string& script) const
    {
        const std::string shown =
            shortened_to_pixels(printable(title_), layout_.width() / title_size);
        script.append("set label ").append(label_text(shown));
        script.append(" at ")
            .append(at(layout_.width() / 2, picture_layout::title_height / 2))
            .append(" center font '");
        script += format_.is_svg ? "sans-serif,16'\n" : "sans,12'\n";
    }

    void put_legend(std::string& script, const picture_row& row) const
    {
        const double top = row.top - row.names.height() - 2;
        for (std::size_t i = 0; i != row.names.entries().size(); ++i) {
            const legend::entry& e = row.names.entries()[i];
            const double y = top + (e.row + 0.5) * legend::line_height;
            script.append("set arrow from ").append(at(e.x, y)).append(" to ");
            script.append(at(e.x + legend::line_sample - 6, y)).append(" nohead ");
            script.append(line_style(i)).append("\nset label ").append(label_text(e.text));
            script.append(" at ").append(at(e.x + legend::line_sample, y)).append(" left\n");
        }
    }

    void put_unit(std::string& script, const picture_row& row) const
    {
        const std::string unit =
            shortened_to_pixels(printable(row.shown->unit), row.bottom - row.top);
        if (unit.empty()) return;
        script.append("set label ").append(label_text(unit)).append(" at ");
        script.append(at(picture_layout::unit_width / 2, (row.top + row.bottom) / 2))
            .append(" center rotate\n");
    }

    void put_frame(std::string& script, const picture_row& row) const
    {
        const axis& x = layout_.x_axis_of(row).shown;
        const double height = row.bottom - row.top;
        const double per_tick = row.shown->of_bools ? 1 : 36;
        const axis y = y_axis(*row.shown, static_cast<std::size_t>(height / per_tick));
        script += "unset label\nunset arrow\n";
        script.append("set lmargin at screen ").append(text_of(layout_.left() / layout_.width()));
        script.append("\nset rmargin at screen ")
            .append(text_of(1 - layout_.right_margin() / layout_.width()));
        script.append("\nset tmargin at screen ").append(text_of(1 - row.top / layout_.height()));
        script.append("\nset bmargin at screen ")
            .append(text_of(1 - row.bottom / layout_.height()));
        script += '\n';
        append_axes(script, x, row.has_ticks, y);
        put_unit(script, row);
        put_legend(script, row);
        if (row.has_ticks) put_x_label(script, x.label, row.bottom + 34);
    }

    // Centered below the frame, but within the picture.
    void put_x_label(std::string& script, const std::string& text, double y) const
    {
        const std::string shown = shortened_to_pixels(text, layout_.width());
        const double half = pixel_width(shown) / 2;
        const double middle = layout_.left() + layout_.plot_width() / 2;
        const double x = std::max(half, std::min(middle, layout_.width() - half));
        script.append("set label ").append(label_text(shown));
        script.append(" at ").append(at(x, y)).append(" center\n");
    }

    const picture_layout& layout_;
    const std::string& title_;
    const picture_format& format_;
};

}  // namespace

std::string picture_script(const std::vector<panel>& panels, const std::string& title,
                           const std::string& time_name, const picture_format& format)
{
    const picture_layout layout(panels, time_name, format);
    return picture(layout, title, format).script();
}

}  // namespace tool
