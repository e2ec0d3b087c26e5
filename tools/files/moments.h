#pragma once

#include <cstddef>
#include <span>

namespace tool {

/// How many sums or extremes are computed side by side, so that no step waits for the one before.
inline constexpr std::size_t lanes = 8;

/// The number of values, their mean, and the sum of their squared distances from it. In long
/// double, which no sum of squares of doubles exceeds.
struct moments {
    void add(const moments& more);

    long double count = 0;
    long double mean = 0;
    long double squares = 0;
};

/// REQUIRES: there are values, and none is NaN.
moments moments_of(std::span<const double> values);

/// Whether any value is NaN; also true if there are opposite infinities.
bool may_have_nan(std::span<const double> values);

}  // namespace tool
