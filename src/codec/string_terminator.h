#pragma once

#include "codec/short_move.h"

namespace tdms_impl {

/// Turns strings that are stored back to back at the end of a buffer into C strings: moves them to
/// its front, one after the other, with a NUL after each.
class string_terminator {
  public:
    /// @param strings the bytes of the strings; there is room for all NULs between `front` and them
    string_terminator(unsigned char* front, const unsigned char* strings)
        : front_(front), next_(strings)
    {
    }

    /// Moves the next string. @return where it is now
    const char* move(std::size_t length)
    {
        unsigned char* const moved = front_;
        short_move(moved, next_, length);
        next_ += length;
        front_ += length;
        *front_++ = '\0';
        return reinterpret_cast<const char*>(moved);
    }

    /// Where the next string would go.
    unsigned char* front() const { return front_; }

  private:
    unsigned char* front_;
    const unsigned char* next_;
};

}  // namespace tdms_impl
