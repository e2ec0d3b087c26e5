#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

/// Shows the progress of long work on standard error, if that is a terminal: a bar, the share that
/// is done, the rate and the time left. It appears after one second.
class progress {
  public:
    /// @param total the number of bytes to process
    progress(std::string what, std::uint64_t total);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    void at(std::uint64_t done);
    void add(std::uint64_t more) { at(done_ + more); }

  private:
    using clock = std::chrono::steady_clock;

    std::string what_;
    std::uint64_t total_;
    std::uint64_t done_ = 0;
    bool terminal_;
    bool shown_ = false;
    clock::time_point begin_;
    clock::time_point next_;
};

}  // namespace tool
