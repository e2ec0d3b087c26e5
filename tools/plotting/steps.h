#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <tdms.hpp>

namespace tool {

/// Counts the steps between times by their lengths, to find those that are unusually long.
class step_counter {
  public:
    /// Takes in the times of rows from `first` on, of which it may know some.
    void take_in(std::uint64_t first, std::span<const tdms::time> times);

    /// The nanoseconds beyond which a step is a gap: five times the median. There is none, and this
    /// is infinite, unless 90 % of the steps are within a factor of five of it.
    double longest() const;

  private:
    // Steps of nearly the same length.
    struct bucket {
        std::uint64_t count = 0;
        std::uint64_t longest = 0;  // in nanoseconds
    };

    void count(tdms::time from, tdms::time to);
    std::uint64_t median() const;

    std::array<bucket, 260> buckets_{};  // four for each power of two
    std::uint64_t steps_ = 0;            // also those that do not go forward
    std::uint64_t next_ = 0;             // row
    tdms::time last_{};
};

}  // namespace tool
