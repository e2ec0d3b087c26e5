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

/// Successive samples that are drawn at the same place. Values that cannot be drawn are NaN.
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

/// What is visible of a curve in a picture, in memory that depends only on the number of columns:
/// the first, the last, the smallest and the largest sample of each cell. Cells are as narrow as
/// the memory allows, and never wider than half a column. If the samples are few, all of them are
/// kept.
class envelope {
  public:
    explicit envelope(std::size_t columns) : columns_(columns) {}

    /// Adds a sample. Samples need not be in the order of x.
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

    /// Must be called after the last sample, before cells().
    void settle()
    {
        if (unordered_) sort();
    }

    /// In the order of the samples, or in the order of x if x goes back and forth too often.
    const std::vector<envelope_cell>& cells() const { return cells_; }
    std::uint64_t samples() const { return samples_; }
    std::size_t columns() const { return columns_; }

    /// The number of samples that are too large to draw.
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
    unsigned shift_ = 0;  // the width of a cell is 2 to this power
    std::uint64_t samples_ = 0;
    std::uint64_t too_large_ = 0;
    bool unordered_ = false;
    std::vector<envelope_cell> cells_;
};

}  // namespace tool
