#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace tdms_impl {

/// Memory for `size` bytes, to be freed by free_bytes() with the same size. Many megabytes come on
/// huge pages where the system has them: touching fresh memory page by page for the first time
/// costs several times as much as copying into it.
unsigned char* allocate_bytes(std::size_t size);
void free_bytes(unsigned char* bytes, std::size_t size);

/// Allocates by allocate_bytes(), and leaves bytes that are only made room for as they are.
template <class T>
struct byte_allocator {
    using value_type = T;

    byte_allocator() = default;
    template <class U>
    explicit byte_allocator(const byte_allocator<U>&)
    {
    }

    T* allocate(std::size_t size) { return allocate_bytes(size); }
    void deallocate(T* bytes, std::size_t size) { free_bytes(bytes, size); }

    void construct(T*) {}
    template <class... Args>
    void construct(T* byte, Args&&... args)
    {
        std::construct_at(byte, std::forward<Args>(args)...);
    }

    friend bool operator==(const byte_allocator&, const byte_allocator&) { return true; }
};

/// Encoded bytes; does not clear bytes added by resize().
using byte_vector = std::vector<unsigned char, byte_allocator<unsigned char>>;

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
