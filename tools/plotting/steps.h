#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <tdms.hpp>

namespace tool {

/// Counts the steps between times by their lengths, to find those that are unusually long.
class step_counter {
  public:
    /// Takes in the times of the rows from `first` on. Rows that it knows are skipped.
    void take_in(std::uint64_t first, std::span<const tdms::time> times);

    /// The nanoseconds beyond which a step is a gap: five times the median. Infinite, so that there
    /// is no gap, unless 90 % of the steps are within a factor of five of the median.
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
    std::uint64_t steps_ = 0;            // with those that do not go forward
    std::uint64_t next_ = 0;             // the first row that is not known
    tdms::time last_{};
};

}  // namespace tool
