#pragma once

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace tool {

template <class T>
constexpr bool is_number = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

/// How much two numbers may differ. It uses long double, which holds all integers of 64 bits.
class tolerance {
  public:
    tolerance(double absolute, double relative) : absolute_(absolute), relative_(relative) {}

    bool is_exact() const { return absolute_ == 0 && relative_ == 0; }

    /// Whether two values count as equal. NaN equals NaN, an infinity only itself.
    template <class T>
    bool accepts(const T& a, const T& b) const
    {
        if (a == b) return true;
        if constexpr (std::is_floating_point_v<T>) {
            if (std::isnan(a) && std::isnan(b)) return true;
        }
        if constexpr (is_number<T>) return !is_exact() && is_near(a, b);
        return false;
    }

  private:
    bool is_near(long double a, long double b) const
    {
        if (!std::isfinite(a) || !std::isfinite(b)) return false;
        const long double larger = std::max(std::abs(a), std::abs(b));
        return std::abs(a - b) <= std::max(absolute_, relative_ * larger);
    }

    long double absolute_;
    long double relative_;
};

}  // namespace tool
