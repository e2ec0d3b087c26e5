#pragma once

#include <cstddef>
#include <cstring>

namespace tdms_impl {

/// Moves bytes in two pieces of a fixed size, which may overlap each other.
/// REQUIRES: Piece <= size <= 2 * Piece
template <std::size_t Piece>
void move_ends(unsigned char* target, const unsigned char* source, std::size_t size)
{
    unsigned char first[Piece];
    unsigned char last[Piece];
    std::memcpy(first, source, Piece);
    std::memcpy(last, source + size - Piece, Piece);
    std::memcpy(target, first, Piece);
    std::memcpy(target + size - Piece, last, Piece);
}

/// Does what memmove() does, faster if the bytes are as few as those of most strings.
inline void short_move(unsigned char* target, const unsigned char* source, std::size_t size)
{
    if (size > 32 || size < 4) {
        std::memmove(target, source, size);
    } else if (size > 16) {
        move_ends<16>(target, source, size);
    } else if (size > 8) {
        move_ends<8>(target, source, size);
    } else {
        move_ends<4>(target, source, size);
    }
}

}  // namespace tdms_impl
