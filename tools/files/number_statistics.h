#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>

#include "files/moments.h"
#include "files/statistics.h"

namespace tool {

template <class T>
constexpr T beyond_all()
{
    using limits = std::numeric_limits<T>;
    return limits::has_infinity ? limits::infinity() : limits::max();
}

template <class T>
constexpr T below_all()
{
    using limits = std::numeric_limits<T>;
    return limits::has_infinity ? -limits::infinity() : limits::lowest();
}

/// The smallest and the largest of some values. Without values, and for NaN alone, low > high.
template <class T>
struct extremes {
    T low = beyond_all<T>();
    T high = below_all<T>();

    // NaN is neither less nor greater.
    void add(T value)
    {
        low = value < low ? value : low;
        high = value > high ? value : high;
    }
    void add(const extremes& more)
    {
        low = std::min(low, more.low);
        high = std::max(high, more.high);
    }
};

template <class T>
extremes<T> extremes_of(std::span<const T> values)
{
    std::array<extremes<T>, lanes> found;
    std::size_t i = 0;
    for (; i + lanes <= values.size(); i += lanes) {
        for (std::size_t j = 0; j != lanes; ++j) found[j].add(values[i + j]);
    }
    for (; i != values.size(); ++i) found[0].add(values[i]);
    for (const extremes<T>& each : found) found[0].add(each);
    return found[0];
}

/// The statistics of a channel's numbers, computed block by block.
template <class T>
class number_statistics {
  public:
    void add(std::span<const T> piece)
    {
        for (; !piece.empty(); piece = piece.subspan(std::min(block_size, piece.size()))) {
            add_block(piece.first(std::min(block_size, piece.size())));
        }
    }

    void put(channel_statistics& to) const
    {
        to.nan = nan_;
        if (moments_.count == 0) return;
        to.minimum = extremes_.low;
        to.maximum = extremes_.high;
        to.mean = static_cast<double>(moments_.mean);
        if (moments_.count < 2) return;
        to.deviation = static_cast<double>(std::sqrt(moments_.squares / (moments_.count - 1)));
    }

  private:
    void add_block(std::span<const T> block)
    {
        const std::span<const double> numbers = numbers_in(block);
        nan_ += block.size() - numbers.size();
        if (numbers.empty()) return;
        const extremes<T> found = extremes_of(block);
        extremes_.add(found);
        if (found.low == found.high) {
            const long double value = numbers[0];
            moments_.add({static_cast<long double>(numbers.size()), value, value - value});
        } else {
            moments_.add(moments_of(numbers));
        }
    }

    // The values that are not NaN.
    std::span<const double> numbers_in(std::span<const T> block)
    {
        if constexpr (std::is_same_v<T, double>) {
            if (!may_have_nan(block)) return block;
        }
        std::size_t count = 0;
        for (const T value : block) {
            numbers_[count] = static_cast<double>(value);
            count += std::isnan(numbers_[count]) ? 0 : 1;  // the next value overwrites a NaN
        }
        return std::span(numbers_).first(count);
    }

    // So few that a block stays in the fastest cache while it is read several times.
    static constexpr std::size_t block_size = 2048;

    std::array<double, block_size> numbers_;
    std::uint64_t nan_ = 0;
    extremes<T> extremes_;
    moments moments_;
};

}  // namespace tool
