#include "plotting/plot_script.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "console/value_text.h"
#include "plotting/gnuplot.h"

namespace tool {
namespace {

struct range {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void add(double value)
    {
        if (!is_drawable(value)) return;
        low = std::min(low, value);
        high = std::max(high, value);
    }

    /// With room at both ends: a share of its width, or so much if it has none.
    range widened(double share, double if_empty) const
    {
        constexpr double least = std::numeric_limits<double>::denorm_min();
        const double room = low < high ? share * (high - low) : std::max(if_empty, least);
        return {low - room, high + room};
    }
};

// Curves that share a unit share a panel.
struct panel {
    std::string unit;
    std::vector<const curve*> curves;
    range y{};

    /// As many digits as distinguish the ends of the axis.
    int digits() const
    {
        const double largest = std::max(std::abs(y.low), std::abs(y.high));
        const double ratio = y.low < y.high ? largest / (y.high - y.low) : 1;
        return std::clamp(static_cast<int>(std::log10(ratio)) + 3, 6, 16);
    }
};

// Appends a curve's points. Of all samples in one column of the picture, the first, the last, the
// smallest and the largest draw the same line as all of them.
class point_writer {
  public:
    point_writer(std::string& out, range x, unsigned columns) : out_(out), x_(x), columns_(columns)
    {
    }

    void add(double x, double y)
    {
        const double column = std::floor((x - x_.low) / (x_.high - x_.low) * columns_);
        if (column != column_ || is_drawable(y) != is_drawable(first_.y)) {
            flush();
            column_ = column;
            first_ = last_ = low_ = high_ = {x, y, held_};
        }
        last_ = {x, y, held_};
        if (y < low_.y) low_ = last_;
        if (y > high_.y) high_ = last_;
        ++held_;
    }

    void flush()
    {
        if (held_ == 0) return;
        const bool falls = high_.order < low_.order;
        const point* before = nullptr;
        for (const point* p : {&first_, falls ? &high_ : &low_, falls ? &low_ : &high_, &last_}) {
            if (before == nullptr || p->order != before->order) put(*p);
            before = p;
        }
        held_ = 0;
    }

  private:
    struct point {
        double x;
        double y;
        std::uint64_t order;  // in its column
    };

    void put(const point& p)
    {
        // What cannot be drawn interrupts the line.
        out_ += text_of(p.x) + ' ' + (is_drawable(p.y) ? text_of(p.y) : "NaN") + '\n';
    }

    std::string& out_;
    range x_;
    unsigned columns_;
    double column_ = -1;
    std::uint64_t held_ = 0;
    point first_{}, last_{}, low_{}, high_{};
};

struct picture {
    std::string terminal;
    unsigned columns;
};

picture picture_for(const std::string& target, std::size_t panels)
{
    const std::string size = "size 900," + std::to_string(160 + 240 * panels) + " noenhanced ";
    if (target.ends_with(".svg"))
        return {"svg " + size + "font 'sans-serif,13' background '#ffffff'", 900};
    if (target.ends_with(".png"))
        return {"pngcairo " + size + "font 'sans,11' background '#ffffff'", 900};
    if (!target.empty())
        throw usage_error("the picture's name must end in .svg or .png: " + in_quotes(target));
    const terminal_size terminal = size_of_terminal(STDOUT_FILENO, {80, 25});
    const unsigned rows = std::max(terminal.rows, 10U) - 1;
    return {"dumb size " + std::to_string(terminal.columns) + ',' + std::to_string(rows) +
                " nofeed noenhanced mono",
            terminal.columns};
}

std::string range_text(range r)
{
    return '[' + text_of(r.low) + ':' + text_of(r.high) + "]\n";
}

// Steps between times on an axis that are easy to count, in seconds.
constexpr std::array<double, 49> time_steps{
    1e-6,   2e-6,   5e-6,    1e-5,    2e-5,    5e-5,    1e-4,    2e-4,    5e-4,   1e-3,
    2e-3,   5e-3,   .01,     .02,     .05,     .1,      .2,      .5,      1,      2,
    5,      10,     15,      30,      60,      120,     300,     600,     900,    1800,
    3600,   7200,   10800,   21600,   43200,   86400,   172800,  432e3,   864e3,  1728e3,
    5256e3, 7884e3, 15768e3, 31536e3, 63072e3, 15768e4, 31536e4, 63072e4, 15768e5};

// How times on an axis are shown, and how much of the first day's date they leave out.
struct time_format {
    const char* text;
    std::size_t missing;
};

time_format time_format_for(double step, double span)
{
    constexpr std::size_t year = 4;
    constexpr std::size_t date = 10;
    if (step >= 86400) return {"%Y-%m-%d", 0};
    if (span > 86400) return {"%m-%d %H:%M", year};
    if (step >= 60) return {"%H:%M", date};
    if (step >= 1) return {"%H:%M:%S", date};
    if (step >= 0.1) return {"%H:%M:%.1S", date};
    return {step >= 0.001 ? "%H:%M:%.3S" : "%H:%M:%.6S", date};
}

class script_builder {
  public:
    script_builder(const std::vector<curve>& curves, const time_axes& times)
        : curves_(curves), times_(times)
    {
        if (!times_.empty()) {
            const auto first = std::min_element(
                times_.begin(), times_.end(), [](const auto& one, const auto& other) {
                    return one.second.first.count < other.second.first.count;
                });
            first_ = first->second.first;
            offset_ = static_cast<double>(local_time_of(first_).fields.tm_gmtoff);
        }
        for (const curve& c : curves_) {
            for (std::size_t i = 0; i != c.values.size(); ++i) x_.add(x_of(c, i));
            const auto same = std::find_if(panels_.begin(), panels_.end(),
                                           [&c](const panel& p) { return p.unit == c.unit; });
            panel& p = same == panels_.end() ? panels_.emplace_back(panel{c.unit, {}}) : *same;
            p.curves.push_back(&c);
            for (const double value : c.values) p.y.add(value);
        }
        x_ = x_.widened(0, 1);
    }

    std::string build(const std::string& title, const std::string& target)
    {
        const picture wanted = picture_for(target, panels_.size());
        in_terminal_ = target.empty();
        script_ = "set encoding utf8\nset terminal " + wanted.terminal + "\nset style data lines\n";
        if (!in_terminal_) {
            script_ +=
                "set grid linetype 1 linecolor '#d0d0d0' linewidth 0.5\n"
                "set rmargin 4\n";
            int digits = 0;  // the widest axis keeps all panels in line
            for (const panel& p : panels_) digits = std::max(digits, p.digits());
            script_ += "set lmargin " + std::to_string(digits + 6) + '\n';
            unsigned number = 0;
            for (const char* const color : {"#1f5fa8", "#c8442b", "#2e8b3d", "#b07800", "#7b4ea3",
                                            "#00838f", "#8d5524", "#4d4d4d"}) {
                script_ += "set linetype " + std::to_string(++number) + " linecolor '" + color +
                           "' linewidth 1.2\n";
            }
            script_ += "set linetype cycle 8\n";
        }
        script_ += "set xrange " + range_text(x_);
        if (!times_.empty()) {
            const double span = x_.high - x_.low;
            const double least = span / (in_terminal_ ? wanted.columns / 16.0 : 9);
            const double step = *std::lower_bound(time_steps.begin(), time_steps.end() - 1, least);
            const time_format format = time_format_for(step, span);
            script_ +=
                "set xtics timedate " + text_of(step) + "\nset format x '" + format.text + "'\n";
            const std::string date = text_of(first_).substr(0, format.missing);
            time_label_ = " (UTC" + offset_text(first_) + ')' + (date.empty() ? "" : ", " + date);
        }
        for (std::size_t i = 0; i != curves_.size(); ++i) put_points(i, wanted.columns);
        if (panels_.size() > 1) {
            script_ += "set multiplot layout " + std::to_string(panels_.size()) + ",1 title " +
                       gnuplot_text(title) + '\n';
        } else {
            script_ += "set title " + gnuplot_text(title) + '\n';
        }
        for (const panel& p : panels_) put_panel(p);
        if (panels_.size() > 1) script_ += "unset multiplot\n";
        return script_;
    }

  private:
    double x_of(const curve& c, std::size_t i) const
    {
        return times_.empty() ? static_cast<double>(i) : times_.at(c.owner).seconds[i] + offset_;
    }

    void put_points(std::size_t number, unsigned columns)
    {
        const curve& c = curves_[number];
        script_ += "$curve" + std::to_string(number) + " << end\n";
        point_writer points(script_, x_, columns);
        for (std::size_t i = 0; i != c.values.size(); ++i) points.add(x_of(c, i), c.values[i]);
        points.flush();
        script_ += "end\n";
    }

    void put_panel(const panel& p)
    {
        constexpr std::size_t few = 50;  // samples, which show as points too
        const bool single = p.curves.size() == 1;
        const bool keyed = !single || in_terminal_;  // a terminal does not turn the axis' label
        const std::string unit = p.unit.empty() ? "" : " [" + p.unit + ']';
        std::string curves;
        for (const curve* const c : p.curves) {
            const std::string number = std::to_string(c - curves_.data());
            curves += (curves.empty() ? "plot $curve" : ", $curve") + number + " using 1:2";
            if (c->values.size() <= few) curves += " with linespoints pointtype 7 pointsize 0.4";
            curves += keyed ? " title " + gnuplot_text(c->name + (single ? unit : "")) : " notitle";
        }
        const std::string x_label =
            times_.empty() ? "sample" : times_.at(p.curves.front()->owner).name + time_label_;
        script_ += "set xlabel " + gnuplot_text(&p == &panels_.back() ? x_label : "") + '\n';
        const std::string y_label = single ? p.curves.front()->name + unit : p.unit;
        script_ += "set ylabel " + gnuplot_text(keyed && single ? "" : y_label) + '\n';
        script_ += keyed ? "set key outside top right horizontal\n" : "unset key\n";
        script_ += "set format y '%." + std::to_string(p.digits()) + "g'\n";
        const double if_empty = p.y.low == 0 ? 1 : std::abs(p.y.low) / 10;
        script_ += "set yrange " + range_text(p.y.widened(0.05, if_empty)) + curves + '\n';
    }

    const std::vector<curve>& curves_;
    const time_axes& times_;
    // The local time's offset from UTC at the first time is that of the whole axis, which does not
    // go back where a clock does.
    nanoseconds first_{};
    double offset_ = 0;
    std::string time_label_;
    std::vector<panel> panels_;
    range x_;
    bool in_terminal_ = false;
    std::string script_;
};

}  // namespace

void check_picture_name(const std::string& target)
{
    static_cast<void>(picture_for(target, 1));
}

std::string plot_script(const std::vector<curve>& curves, const time_axes& times,
                        const std::string& title, const std::string& target)
{
    return script_builder(curves, times).build(title, target);
}

}  // namespace tool
