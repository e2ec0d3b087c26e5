#pragma once

#include <chrono>
#include <string>
#include <tdms.hpp>

#include "files/input.h"

namespace tool {

/// Follows a file that is being recorded.
class follower {
  public:
    /// Throws a usage_error if the file cannot grow. It must outlive this.
    explicit follower(const input& from);

    /// Takes in what was added. Throws a failure if the file was emptied to be recorded anew, and,
    /// once the last that was added has been taken in, if it was replaced or removed.
    void refresh(tdms::file& file);

    /// Waits that long; throws closed_pipe as soon as nobody reads standard output any more.
    static void wait(std::chrono::milliseconds time);

  private:
    const input& from_;
    bool is_gone_ = false;
};

}  // namespace tool
