#pragma once

#include <concepts>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace tdms_impl {

/// Memory for `size` bytes, to be freed by free_bytes() with the same size. Large blocks use huge
/// pages where the system has them: touching fresh memory in small pages costs several times as
/// much as copying into it.
unsigned char* allocate_bytes(std::size_t size);
void free_bytes(unsigned char* bytes, std::size_t size);

/// Allocates with allocate_bytes().
struct byte_allocator {
    using value_type = unsigned char;
    template <std::same_as<value_type> T>
    struct rebind {
        using other = byte_allocator;
    };

    static unsigned char* allocate(std::size_t size) { return allocate_bytes(size); }
    static void deallocate(unsigned char* bytes, std::size_t size) { free_bytes(bytes, size); }

    static void construct(unsigned char*) {}
    static void construct(unsigned char* byte, unsigned char value) { *byte = value; }

    friend bool operator==(const byte_allocator&, const byte_allocator&) = default;
};

/// Encoded bytes; does not clear bytes added by resize().
using byte_vector = std::vector<unsigned char, byte_allocator>;

/// Encoded bytes, few of them.
using byte_string = std::basic_string<unsigned char>;

/// Moves the bytes to memory with room for `extra` more, and for at least as many again as there
/// are: growing in small steps copies each byte a constant number of times.
void grow(byte_vector& target, std::size_t extra);
/// Makes room for `extra` bytes more.
inline void make_room(byte_vector& target, std::size_t extra)
{
    if (extra > target.capacity() - target.size()) grow(target, extra);
}

/// Appends in one piece; insert() would go byte by byte.
inline void append(byte_vector& target, const void* bytes, std::size_t size)
{
    if (size == 0) return;
    make_room(target, size);
    const std::size_t old_size = target.size();
    target.resize(old_size + size);
    std::memcpy(target.data() + old_size, bytes, size);
}

}  // namespace tdms_impl
