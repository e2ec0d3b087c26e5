#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tool {

/// Whether a value is a number small enough that an axis width cannot overflow.
inline bool is_drawable(double value)
{
    return std::abs(value) <= 1e300;
}

/// Successive samples that are drawn in the same place. What cannot be drawn is not a number.
struct envelope_cell {
    std::int64_t first_x;
    std::int64_t last_x;
    double first;
    double last;
    std::int64_t low_x;
    std::int64_t high_x;
    double low = std::numeric_limits<double>::infinity();  // of the values that can be drawn
    double high = -std::numeric_limits<double>::infinity();

    void take_in(const envelope_cell& next)
    {
        last_x = next.last_x;
        last = next.last;
        if (next.low < low) {
            low = next.low;
            low_x = next.low_x;
        }
        if (next.high > high) {
            high = next.high;
            high_x = next.high_x;
        }
    }
};

/// What is seen of a curve in a picture of some columns, in memory that depends only on these: the
/// first, last, smallest and largest value of the samples in each cell. A cell is as narrow as the
/// memory allows, and never wider than half a column. A few samples are all kept.
class envelope {
  public:
    explicit envelope(std::size_t columns) : columns_(columns) {}

    /// Adds a sample. Those before it in time may come after it.
    void add(std::int64_t x, double y)
    {
        ++samples_;
        if (std::isfinite(y) && !is_drawable(y)) ++too_large_;
        const envelope_cell sample = cell_of(x, y);
        while (cells_.empty() || bin(cells_.back()) != x >> shift_) {
            if (cells_.size() < limit()) {
                cells_.push_back(sample);
                return;
            }
            coarsen();
        }
        cells_.back().take_in(sample);
    }

    /// Goes between the last sample and cells().
    void settle()
    {
        if (unordered_) sort();
    }

    /// In the order of the samples; in that of x if that goes back and forth too often.
    const std::vector<envelope_cell>& cells() const { return cells_; }
    std::uint64_t samples() const { return samples_; }
    std::size_t columns() const { return columns_; }

    /// How many of the samples are numbers, but too large to draw.
    std::uint64_t too_large() const { return too_large_; }

  private:
    std::size_t limit() const { return 4 * columns_; }
    std::int64_t bin(const envelope_cell& c) const { return c.first_x >> shift_; }

    static envelope_cell cell_of(std::int64_t x, double y)
    {
        constexpr double none = std::numeric_limits<double>::quiet_NaN();
        if (!is_drawable(y)) return {x, x, none, none, x, x};
        return {x, x, y, y, x, x, y, y};
    }

    void coarsen();
    void sort();
    void merge_neighbours();

    std::size_t columns_;
    unsigned shift_ = 0;  // a cell is 2 to this power wide
    std::uint64_t samples_ = 0;
    std::uint64_t too_large_ = 0;
    bool unordered_ = false;
    std::vector<envelope_cell> cells_;
};

}  // namespace tool
