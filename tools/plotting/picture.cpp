#include "plotting/picture.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <map>

#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"
#include "plotting/gnuplot.h"
#include "plotting/panel_script.h"
#include "plotting/pixel_width.h"

namespace tool {
namespace {

constexpr std::array colors{"#1f5fa8", "#c8442b", "#2e8b3d", "#b07800", "#7b4ea3", "#00a5b5",
                            "#8d5524", "#4d4d4d", "#e377c2", "#8a9a00", "#5aa9f0", "#000000"};
constexpr std::array dashes{"1", "(16,8)"};
static_assert(colors.size() * dashes.size() >= curves_in_picture_panel);

// Pixels.
constexpr double character = 7.3;  // of an axis' labels, on average
constexpr double line_height = 18;
constexpr double title_height = 34;
constexpr double ticks_and_label = 44;
constexpr double between_panels = 12;
constexpr double least_margin = 24;
constexpr double between_names = 15;
constexpr double title_size = 1.25;  // of the labels' font
constexpr double line_sample = 28;
constexpr double unit_width = 28;
constexpr double tallest_picture = 30000;  // that can be drawn
constexpr double usual_total = 12000;

constexpr std::size_t longest_label = 48;
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

// A label's text. gnuplot escapes what XML reserves but for this, which must not be in its text.
std::string label_text(std::string text)
{
    for (std::size_t at = 0; (at = text.find("]]>", at)) != std::string::npos;) {
        text.insert(at + 2, "\u200B");  // a space without width
    }
    return gnuplot_text(text);
}

// A panel's legend: its curves' names, in one row or in columns.
class legend {
  public:
    legend(const panel& p, double left, double width)
    {
        double total = 0;
        double widest = 0;
        for (const curve* const c : p.curves) {
            entries_.push_back({fitting_label(*c, width - line_sample), 0, 0});
            const double taken = width_of(entries_.back());
            total += taken;
            widest = std::max(widest, taken);
        }
        const double room = width + between_names;
        place(left, total <= room ? p.curves.size() : static_cast<std::size_t>(room / widest),
              total <= room ? 0 : widest);
    }

    struct entry {
        std::string text;
        double x;
        double row;
    };
    const std::vector<entry>& entries() const { return entries_; }
    double height() const { return rows_ * line_height; }

  private:
    static std::string fitting_label(const curve& c, double room)
    {
        std::size_t longest = longest_label;
        std::string text = shown_label(c, longest);
        while (longest > 1 && pixel_width(text) > room) text = shown_label(c, --longest);
        return text;
    }

    static double width_of(const entry& e)
    {
        return line_sample + pixel_width(e.text) + between_names;
    }

    // @param column the width of a column, or 0 for the width of each name
    void place(double left, std::size_t columns, double column)
    {
        double x = left;
        std::size_t in_row = 0;
        for (entry& e : entries_) {
            if (in_row++ == std::max<std::size_t>(columns, 1)) {
                in_row = 1;
                x = left;
                ++rows_;
            }
            e.x = x;
            e.row = rows_ - 1;
            x += column == 0 ? width_of(e) : column;
        }
    }

    std::vector<entry> entries_;
    double rows_ = 1;
};

struct layout_row {
    const panel* shown;
    legend names;
    bool has_ticks;  // as the last one over its kind of x
    double top = 0;  // of the frame
    double bottom = 0;
};

class picture {
  public:
    picture(const std::vector<panel>& panels, const std::string& title,
            const std::string& time_name, const picture_format& format)
        : title_(title), format_(format), width_(format.width)
    {
        place_sides(panels, time_name);
        for (const panel& p : panels) {
            const bool is_last = &p == &panels.back() || (&p + 1)->kind != p.kind;
            rows_.push_back({&p, legend(p, left_, plot_width_), is_last});
        }
        place_rows();
    }

    std::string script() const
    {
        std::string script = "set encoding utf8\nset terminal ";
        script.append(format_.is_svg ? "svg" : "pngcairo").append(" noenhanced size ");
        script.append(std::to_string(format_.width)).append(",").append(text_of(height_));
        script += format_.is_svg ? " font 'sans-serif,13'" : " font 'sans,10'";
        script +=
            " background '#ffffff'\n"
            "unset key\n"
            "set grid xtics ytics linetype 1 linecolor rgb '#d8d8d8' linewidth 0.5\n"
            "set border linecolor rgb '#606060'\n"
            "set tics textcolor rgb '#000000'\n";
        std::vector<panel_plot> plots;
        for (const layout_row& row : rows_) {
            plots.emplace_back(script, *row.shown, axes_.at(row.shown->kind), plots.size(),
                               few_samples);
        }
        script += "set multiplot\n";
        for (std::size_t i = 0; i != rows_.size(); ++i) {
            put_frame(script, rows_[i]);
            if (i == 0) put_title(script);
            plots[i].append_to(script, line_style, point_style);
        }
        return script + "unset multiplot\n";
    }

  private:
    void place_sides(const std::vector<panel>& panels, const std::string& time_name)
    {
        double tick_width = 0;
        for (const panel& p : panels) {
            tick_width = std::max(tick_width, widest_tick(y_axis(p, 5)));
        }
        left_ = unit_width + tick_width + 14;
        set_right(least_margin);
        make_axes(panels, time_name);
        // At the ends of an axis half of a label is beside it.
        double beside = 0;
        for (const auto& [kind, x] : axes_) {
            beside = std::max(beside, widest_tick(x.shown) / 2);
        }
        left_ = std::max(left_, beside);
        set_right(std::max(least_margin, beside));
        make_axes(panels, time_name);
    }

    static double widest_tick(const axis& a)
    {
        double width = 0;
        for (const tick& t : a.ticks) width = std::max(width, pixel_width(t.text));
        return width;
    }

    void set_right(double margin)
    {
        right_margin_ = margin;
        plot_width_ = width_ - left_ - margin;
        if (plot_width_ < 60) throw failure("the picture is too narrow; see --size");
    }

    void make_axes(const std::vector<panel>& panels, const std::string& time_name)
    {
        axes_.clear();
        const auto characters = static_cast<std::size_t>(plot_width_ / character);
        for (const panel& p : panels) {
            axes_.try_emplace(p.kind, panels, p.kind, time_name, characters);
        }
    }

    void place_rows()
    {
        double fixed = title_height;
        double lanes = 0;  // parts into which the frames' heights are divided
        for (const layout_row& row : rows_) {
            fixed += row.names.height() + (row.has_ticks ? ticks_and_label : 0) + between_panels;
            lanes += parts_of(row);
        }
        const double least = fixed + 40.0 * static_cast<double>(rows_.size());
        const double usual = fixed + 200 * lanes;
        height_ = format_.height ? *format_.height
                                 : std::floor(std::min(usual, std::max(least, usual_total)));
        if (height_ < least || height_ > tallest_picture) {
            const std::string needed = with_commas(static_cast<std::uint64_t>(std::ceil(least)));
            std::string message = count_of(rows_.size(), "panel");
            message.append(rows_.size() == 1 ? " needs" : " need").append(" a height of ");
            message.append(needed).append(" pixels");
            message += least > tallest_picture ? ", too much for a picture" : " (--size)";
            throw failure(message.append("; name fewer channels"));
        }
        const double part = (height_ - fixed) / lanes;
        double y = title_height;
        for (layout_row& row : rows_) {
            row.top = y + row.names.height();
            row.bottom = row.top + part * parts_of(row);
            y = row.bottom + (row.has_ticks ? ticks_and_label : 0) + between_panels;
        }
    }

    // A lane of bools needs less than a frame, but many need more, as many curves do.
    static double parts_of(const layout_row& row)
    {
        const auto curves = static_cast<double>(row.shown->curves.size());
        if (row.shown->of_bools) return std::max(0.4, 0.2 * curves);
        return 1 + 0.075 * std::max(0.0, curves - 6);
    }

    std::string at(double x, double y) const
    {
        std::string text = "screen " + text_of(x / width_);
        return text.append(", screen ").append(text_of(1 - y / height_));
    }

    void put_title(std::string& script) const
    {
        const std::string shown = shortened_to_pixels(printable(title_), width_ / title_size);
        script.append("set label ").append(label_text(shown));
        script.append(" at ").append(at(width_ / 2, title_height / 2)).append(" center font '");
        script += format_.is_svg ? "sans-serif,16'\n" : "sans,12'\n";
    }

    void put_legend(std::string& script, const layout_row& row) const
    {
        const double top = row.top - row.names.height() - 2;
        for (std::size_t i = 0; i != row.names.entries().size(); ++i) {
            const legend::entry& e = row.names.entries()[i];
            const double y = top + (e.row + 0.5) * line_height;
            script.append("set arrow from ").append(at(e.x, y)).append(" to ");
            script.append(at(e.x + line_sample - 6, y)).append(" nohead ");
            script.append(line_style(i)).append("\nset label ").append(label_text(e.text));
            script.append(" at ").append(at(e.x + line_sample, y)).append(" left\n");
        }
    }

    void put_unit(std::string& script, const layout_row& row) const
    {
        const std::string unit =
            shortened_to_pixels(printable(row.shown->unit), row.bottom - row.top);
        if (unit.empty()) return;
        script.append("set label ").append(label_text(unit)).append(" at ");
        script.append(at(unit_width / 2, (row.top + row.bottom) / 2)).append(" center rotate\n");
    }

    void put_frame(std::string& script, const layout_row& row) const
    {
        const axis& x = axes_.at(row.shown->kind).shown;
        const double height = row.bottom - row.top;
        const double per_tick = row.shown->of_bools ? 1 : 36;
        const axis y = y_axis(*row.shown, static_cast<std::size_t>(height / per_tick));
        script += "unset label\nunset arrow\n";
        script.append("set lmargin at screen ").append(text_of(left_ / width_));
        script.append("\nset rmargin at screen ").append(text_of(1 - right_margin_ / width_));
        script.append("\nset tmargin at screen ").append(text_of(1 - row.top / height_));
        script.append("\nset bmargin at screen ").append(text_of(1 - row.bottom / height_));
        script += '\n';
        append_axes(script, x, row.has_ticks, y);
        put_unit(script, row);
        put_legend(script, row);
        if (row.has_ticks) put_x_label(script, x.label, row.bottom + 34);
    }

    // Below the middle of the frame, as far as the picture's sides allow.
    void put_x_label(std::string& script, const std::string& text, double y) const
    {
        const std::string shown = shortened_to_pixels(text, width_);
        const double half = pixel_width(shown) / 2;
        const double middle = std::max(half, std::min(left_ + plot_width_ / 2, width_ - half));
        script.append("set label ").append(label_text(shown));
        script.append(" at ").append(at(middle, y)).append(" center\n");
    }

    const std::string& title_;
    picture_format format_;
    double width_;
    double height_ = 0;
    double left_ = 0;
    double right_margin_ = 0;
    double plot_width_ = 0;
    std::map<x_kind, x_axis> axes_;
    std::vector<layout_row> rows_;
};

bool ends_with_suffix(const std::string& name, std::string_view suffix)
{
    return name.size() > suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(), [](char lower, char c) {
               return std::tolower(static_cast<unsigned char>(c)) == lower;
           });
}

unsigned pixels(std::string_view text, const std::string& size)
{
    constexpr unsigned least = 200;
    constexpr unsigned most = 10000;
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) {
        throw usage_error("no size: " + in_quotes(size) + "; sizes are such as 1200x800, from " +
                          "200x200 to 10000x10000");
    }
    return number;
}

}  // namespace

picture_format picture_format_of(const std::string& target, const std::string& size)
{
    picture_format format{ends_with_suffix(target, ".svg"), 900, {}};
    if (!format.is_svg && !ends_with_suffix(target, ".png")) {
        throw usage_error("the picture's name must end in .svg or .png: " + in_quotes(target));
    }
    if (size.empty()) return format;
    const std::string_view both = size;
    const std::size_t x = std::min(both.find('x'), both.size());
    format.width = pixels(both.substr(0, x), size);
    format.height = pixels(both.substr(std::min(x + 1, both.size())), size);
    return format;
}

std::string picture_script(const std::vector<panel>& panels, const std::string& title,
                           const std::string& time_name, const picture_format& format)
{
    return picture(panels, title, time_name, format).script();
}

}  // namespace tool
