#include "plotting/axis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "console/text.h"
#include "console/value_text.h"

namespace tool {
namespace {

// The least of ..., 0.1, 0.2, 0.5, 1, 2, 5, 10, ... that is not less than `least`.
double round_step(double least)
{
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1 - 1e-9)) return factor * power;
    }
    return 10 * power;
}

// A label with as many digits as it takes to distinguish the ticks.
std::string number_text(double value, double step, double largest)
{
    std::array<char, longest_value> text{};
    const int exponent = static_cast<int>(std::floor(std::log10(step) + 1e-9));
    if (largest < 1e9 && exponent >= -6) {
        std::snprintf(text.data(), text.size(), "%.*f", std::max(0, -exponent), value);
    } else {
        const int digits = static_cast<int>(std::floor(std::log10(largest))) - exponent + 1;
        std::snprintf(text.data(), text.size(), "%.*g", std::clamp(digits, 1, 16), value);
    }
    return text.data();
}

// The next smaller round step.
double finer(double step)
{
    return round_step(step / 2.5);
}

std::vector<tick> number_ticks(const axis& a, double step, double largest)
{
    std::vector<tick> ticks;
    const double first = std::ceil(a.low / step);
    const double last = std::floor(a.high / step);
    for (int i = 0; first + i <= last; ++i) {
        const double at = first + i == 0 ? 0 : (first + i) * step;
        ticks.push_back({at, number_text(at, step, std::max(largest, step))});
    }
    return ticks;
}

}  // namespace

std::size_t axis::tick_width() const
{
    std::size_t width = 0;
    for (const tick& t : ticks) width = std::max(width, width_of(t.text));
    return width;
}

axis number_axis(double low, double high, double room, double if_empty, std::size_t most,
                 double least)
{
    // Doubles have too few digits to distinguish the ticks of a narrower axis.
    const double largest = std::max(std::abs(low), std::abs(high));
    const double narrowest = std::max(1e-12 * largest, 1e-290);
    const double margin = high - low > narrowest ? room * (high - low) : if_empty / 2;
    axis result{low - std::max(margin, narrowest), high + std::max(margin, narrowest), {}, {}};
    most = std::max<std::size_t>(most, 2);
    const double width = result.high - result.low;
    double step = round_step(std::max(width / static_cast<double>(most), least));
    result.ticks = number_ticks(result, step, largest);
    // A single tick shows no scale.
    while (result.ticks.size() < 2 && finer(step) >= least) {
        step = finer(step);
        result.ticks = number_ticks(result, step, largest);
    }
    if (result.ticks.size() > most + 1) result.ticks = {result.ticks.front(), result.ticks.back()};
    return result;
}

}  // namespace tool
