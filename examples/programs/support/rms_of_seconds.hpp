// The root mean square of values, second by second.
#ifndef EXAMPLES_RMS_OF_SECONDS_HPP
#define EXAMPLES_RMS_OF_SECONDS_HPP

#include <chrono>
#include <cmath>
#include <cstdint>
#include <iostream>

#include "conversions.hpp"

/// The time that so many samples take.
inline std::chrono::nanoseconds after(std::uint64_t samples, double rate)
{
    return std::chrono::nanoseconds(std::llround(static_cast<double>(samples) * 1e9 / rate));
}

/// Prints a line for each second, when the next one begins.
class rms_of_seconds {
  public:
    void add(moment time, double value)
    {
        if (count_ != 0 && time - begin_ >= std::chrono::seconds(1)) print();
        if (count_ == 0) begin_ = time;
        sum_ += value * value;
        ++count_;
    }

    /// Prints the last second, which may be incomplete.
    void print()
    {
        if (count_ == 0) return;
        std::cout << to_text(begin_) << ' ' << to_text(std::sqrt(sum_ / count_)) << '\n';
        sum_ = count_ = 0;
    }

  private:
    moment begin_;
    double sum_ = 0;
    double count_ = 0;
};

#endif
