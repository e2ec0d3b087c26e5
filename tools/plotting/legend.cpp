#include "plotting/legend.h"

#include <algorithm>

#include "plotting/panel_script.h"
#include "plotting/pixel_width.h"

namespace tool {
namespace {

constexpr double between_names = 15;
constexpr std::size_t longest_label = 48;

std::string fitting_label(const curve& c, double room)
{
    std::size_t longest = longest_label;
    std::string text = shown_label(c, longest);
    while (longest > 1 && pixel_width(text) > room) text = shown_label(c, --longest);
    return text;
}

double width_of(const legend::entry& e)
{
    return legend::line_sample + pixel_width(e.text) + between_names;
}

}  // namespace

legend::legend(const panel& p, double left, double width)
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
    if (total <= room) {
        place(left, p.curves.size(), 0);
    } else {
        place(left, static_cast<std::size_t>(room / widest), widest);
    }
}

// @param column the width of a column, or 0 for the width of each name
void legend::place(double left, std::size_t columns, double column)
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

}  // namespace tool
