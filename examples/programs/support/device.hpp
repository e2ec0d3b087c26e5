// A simulated machine under test. In a real program, this is the driver of your hardware.
#ifndef EXAMPLES_DEVICE_HPP
#define EXAMPLES_DEVICE_HPP

#include <chrono>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "conversions.hpp"

/// What the machine delivers every tenth of a second.
struct block {
    moment start;
    std::vector<double> acceleration;    // m/s^2
    std::vector<std::uint32_t> encoder;  // ticks, one per sample
    std::vector<moment> slow_times;
    std::vector<float> temperature;  // degC
    std::vector<moment> event_times;
    std::vector<std::string> events;
};

/// Times are computed from the number of samples, so they have neither gaps nor jitter.
class device {
  public:
    static constexpr int rate = 25600;  // of the fast signals, Hz
    static constexpr int blocks_per_second = 10;

    /// When the next block is complete.
    std::chrono::steady_clock::time_point due() const { return begin_ + (blocks_ + 1) * period; }

    /// When the next block starts.
    moment time() const { return start_ + blocks_ * period; }

    block next()
    {
        block result{time(), {}, {}, {}, {}, {}, {}};
        for (int i = 0; i != rate / blocks_per_second; ++i, ++samples_) {
            const double turn = 2 * std::numbers::pi * static_cast<double>(samples_) / rate;
            result.acceleration.push_back(std::sin(50 * turn) + 0.25 * std::sin(1230 * turn));
            result.encoder.push_back(static_cast<std::uint32_t>(samples_));
        }
        if (blocks_ % 2 == 0) {
            result.slow_times.push_back(result.start);
            result.temperature.push_back(60 - 40 * std::exp(static_cast<float>(-blocks_) / 6000));
        }
        if (blocks_ % 5 == 1) {
            result.event_times.push_back(result.start);
            result.events.push_back("load step " + std::to_string(blocks_ / 5));
        }
        ++blocks_;
        return result;
    }

  private:
    static constexpr std::chrono::milliseconds period{1000 / blocks_per_second};

    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    const moment start_ = std::chrono::system_clock::now();
    std::int64_t blocks_ = 0;
    std::int64_t samples_ = 0;
};

#endif
