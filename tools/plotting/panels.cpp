#include "plotting/panels.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "files/time_distance.h"

namespace tool {
namespace {

constexpr double x_room = 0.01;
constexpr double y_room = 0.05;

struct range {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void add(const range& other)
    {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
    double width() const { return high - low; }
    double largest() const { return std::max(std::abs(low), std::abs(high)); }
};

range y_range(const curve& c)
{
    range y;
    for (const envelope_cell& cell : c.trace.cells()) y.add({cell.low, cell.high});
    return y;
}

// Whether both can be seen on one axis. Zero, as the width of a constant, fits any axis.
bool are_alike(double one, double other)
{
    constexpr double factor = 100;
    return one == 0 || other == 0 || (one <= factor * other && other <= factor * one);
}

bool fits(const panel& p, const curve& c, const range& y, std::size_t most)
{
    if (p.curves.size() >= most || p.kind != c.kind || p.unit != c.unit ||
        p.of_bools != c.is_bool()) {
        return false;
    }
    if (!p.unit.empty() || p.of_bools) return true;
    return std::ranges::all_of(p.curves, [&y](const curve* member) {
        const range other = y_range(*member);
        return are_alike(y.width(), other.width()) && are_alike(y.largest(), other.largest());
    });
}

}  // namespace

std::vector<panel> panels_of(const std::vector<curve>& curves, std::size_t most)
{
    std::vector<panel> panels;
    for (const curve& c : curves) {
        if (!c.has_numbers()) continue;
        const range y = y_range(c);
        auto found =
            std::ranges::find_if(panels, [&](const panel& p) { return fits(p, c, y, most); });
        if (found == panels.end()) {
            panels.push_back({c.kind, c.unit, c.is_bool(), {}, y.low, y.high});
            found = panels.end() - 1;
        }
        found->curves.push_back(&c);
        found->low = std::min(found->low, y.low);
        found->high = std::max(found->high, y.high);
    }
    std::ranges::stable_sort(panels, {}, &panel::kind);
    return panels;
}

x_axis::x_axis(const std::vector<panel>& panels, x_kind kind, const std::string& time_name,
               std::size_t characters)
{
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
    range x;
    for (const panel& p : panels) {
        if (p.kind != kind) continue;
        for (const curve* const c : p.curves) {
            for (const envelope_cell& cell : c->trace.cells()) {
                first = std::min({first, cell.first_x, cell.last_x});
                last = std::max({last, cell.first_x, cell.last_x});
                x.add({position(*c, cell.first_x), position(*c, cell.last_x)});
            }
        }
    }
    const std::size_t most = characters / 12;
    if (kind == x_kind::samples) {
        shown = number_axis(x.low, x.high, x_room, 1, most, 1);
        shown.label = "sample";
    } else if (kind == x_kind::seconds) {
        shown = number_axis(x.low, x.high, x_room, 1, most);
        shown.label = "seconds from the first sample";
    } else {
        use_times(time_name, first, last, characters);
    }
}

void x_axis::use_times(const std::string& name, std::int64_t first, std::int64_t last,
                       std::size_t characters)
{
    constexpr std::int64_t half_a_second = 500000000;
    if (first == last) {
        first = std::max(first, std::numeric_limits<std::int64_t>::min() + half_a_second);
        first -= half_a_second;
        last = std::min(last, std::numeric_limits<std::int64_t>::max() - half_a_second);
        last += half_a_second;
    }
    origin_ = first;
    const auto time = [](std::int64_t count) {
        return tdms::time(std::chrono::nanoseconds(count));
    };
    shown = time_axis(name, time(first), time(last), x_room, characters);
}

double x_axis::position(const curve& c, std::int64_t x) const
{
    if (c.kind != x_kind::time) return static_cast<double>(x) / c.rate;
    return 1e-9 * static_cast<double>(nanoseconds_between(origin_, x));
}

axis y_axis(const panel& p, std::size_t most_ticks)
{
    const double if_empty = p.low == 0 ? 2 : std::abs(p.low) / 5;
    if (!p.of_bools) return number_axis(p.low, p.high, y_room, if_empty, most_ticks);
    constexpr double gap = 1 - lane_height;
    axis result{-gap / 2, static_cast<double>(p.curves.size()) - gap / 2, {}, {}};
    for (std::size_t i = 0; i != p.curves.size(); ++i) {
        const auto lane = static_cast<double>(i);
        result.ticks.push_back({lane, "false"});
        result.ticks.push_back({lane + lane_height, "true"});
    }
    return result;
}

}  // namespace tool
