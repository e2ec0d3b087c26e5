#pragma once

#include <cstddef>
#include <cstring>

namespace tdms {

/// Makes C strings of strings that stand back to back at the end of a buffer: moves them to its
/// front, one after the other, with a NUL after each.
class string_terminator {
  public:
    /// @param strings the bytes of the strings, which end at `end`; before them, from `front` on,
    ///                there is room for a NUL for each
    string_terminator(char* front, const char* strings, const char* end)
        : front_(front), next_(strings), end_(end)
    {
    }

    /// Moves the next string, of `length` bytes. @return where it is now
    const char* move(std::size_t length)
    {
        char* const moved = front_;
        if (length <= longest_short && may_move_whole_pieces()) {
            // Pieces that overrun the string are faster than its exact bytes.
            for (std::size_t done = 0; done < length; done += piece) {
                char bytes[piece];
                std::memcpy(bytes, next_ + done, piece);
                std::memcpy(moved + done, bytes, piece);
            }
        } else {
            std::memmove(moved, next_, length);
        }
        next_ += length;
        front_ += length;
        *front_++ = '\0';
        return moved;
    }

    /// Where the next string would go.
    char* front() const { return front_; }

  private:
    static constexpr std::size_t piece = 16;
    static constexpr std::size_t longest_short = 4 * piece;

    // Whether a piece too long overwrites nothing that has not moved yet, and is read from nowhere
    // beyond the buffer.
    bool may_move_whole_pieces() const
    {
        return next_ - front_ >= static_cast<std::ptrdiff_t>(piece) &&
               end_ - next_ >= static_cast<std::ptrdiff_t>(longest_short + piece);
    }

    char* front_;
    const char* next_;
    const char* end_;
};

}  // namespace tdms
