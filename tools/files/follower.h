#pragma once

#include <chrono>
#include <tdms.hpp>

#include "files/input.h"

namespace tool {

/// Follows a file that is being recorded.
class follower {
  public:
    /// Throws a usage_error if the input is a copy, which cannot grow. The input must outlive this.
    explicit follower(const input& from);

    /// Takes in what was added. Throws a failure if the file was emptied to be recorded again; if
    /// it was replaced or removed, only after everything that was added has been taken in.
    void refresh(tdms::file& file);

    /// Waits; throws closed_pipe as soon as nobody reads standard output any more.
    static void wait(std::chrono::milliseconds time);

  private:
    const input& from_;
    bool is_gone_ = false;
};

}  // namespace tool
