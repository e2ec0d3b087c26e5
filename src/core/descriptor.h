#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tdms_impl {

/// Owns an open file descriptor, or none, which is less than 0. Closing leaves errno alone.
class descriptor {
  public:
    descriptor() = default;
    explicit descriptor(int number) : number_(number) {}
    ~descriptor() { reset(); }
    descriptor(descriptor&& other) noexcept : number_(other.release()) {}
    descriptor& operator=(descriptor&& other) noexcept
    {
        reset(other.release());
        return *this;
    }

    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }
    void reset(int number = -1)
    {
        const int reason = errno;
        if (number_ >= 0) ::close(number_);
        errno = reason;
        number_ = number;
    }

  private:
    int number_ = -1;
};

}  // namespace tdms_impl
