#include "files/moments.h"

#include <array>
#include <cmath>
#include <functional>
#include <numeric>

namespace tool {
namespace {

template <class Sum, class Term>
Sum sum_over(std::span<const double> values, Term term)
{
    std::array<Sum, lanes> sums{};
    std::size_t i = 0;
    for (; i + lanes <= values.size(); i += lanes) {
        for (std::size_t j = 0; j != lanes; ++j) sums[j] += term(values[i + j]);
    }
    for (; i != values.size(); ++i) sums[0] += term(values[i]);
    return std::accumulate(sums.begin(), sums.end(), Sum{});
}

template <class Sum>
moments moments_by(std::span<const double> values)
{
    const auto count = static_cast<Sum>(values.size());
    const Sum mean = sum_over<Sum>(values, [](double v) -> Sum { return v; }) / count;
    // 0 but for rounding, which it corrects.
    const Sum rest = sum_over<Sum>(values, [mean](double v) -> Sum { return v - mean; });
    const Sum squares = sum_over<Sum>(values, [mean](double v) { return (v - mean) * (v - mean); });
    moments result{count, mean, squares - rest * rest / count};
    if (std::isfinite(mean)) result.mean += rest / count;
    return result;
}

}  // namespace

void moments::add(const moments& more)
{
    if (count == 0) {
        *this = more;
        return;
    }
    const long double total = count + more.count;
    const long double distance = more.mean - mean;
    squares += more.squares + distance * distance * (count * more.count / total);
    // An infinite mean stays so, unless the other one is the opposite infinity.
    mean += std::isfinite(distance) ? distance * (more.count / total) : more.mean;
    count = total;
}

moments moments_of(std::span<const double> values)
{
    constexpr double least = 1e-280;  // smaller sums of squares have lost digits
    const moments fast = moments_by<double>(values);
    if (std::isfinite(fast.squares) && fast.squares > least) return fast;
    return moments_by<long double>(values);
}

// A NaN makes the sum NaN.
bool may_have_nan(std::span<const double> values)
{
    return std::isnan(sum_over<double>(values, std::identity()));
}

}  // namespace tool
