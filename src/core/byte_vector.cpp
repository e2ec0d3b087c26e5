#include "core/byte_vector.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>
#include <stdexcept>

namespace tdms_impl {
namespace {

constexpr std::size_t huge_page = std::size_t{2} << 20;
constexpr std::align_val_t alignment{huge_page};
constexpr std::size_t least_on_huge_pages = 2 * huge_page;

}  // namespace

unsigned char* allocate_bytes(std::size_t size)
{
    if (size < least_on_huge_pages) return static_cast<unsigned char*>(::operator new(size));
    const std::size_t whole_pages = (size + huge_page - 1) / huge_page * huge_page;
    void* const bytes = ::operator new(whole_pages, alignment);
    // A hint that affects nothing but speed.
    madvise(bytes, whole_pages, MADV_HUGEPAGE);
    return static_cast<unsigned char*>(bytes);
}

void grow(byte_vector& target, std::size_t extra)
{
    if (extra > target.max_size() - target.size()) throw std::length_error("too many bytes");
    const std::size_t doubled = std::min(2 * target.size(), target.max_size());
    byte_vector larger;
    larger.reserve(std::max(target.size() + extra, doubled));
    larger.resize(target.size());
    if (!target.empty()) std::memcpy(larger.data(), target.data(), target.size());
    target.swap(larger);
}

void free_bytes(unsigned char* bytes, std::size_t size)
{
    if (size < least_on_huge_pages) {
        ::operator delete(bytes);
    } else {
        ::operator delete(bytes, alignment);
    }
}

}  // namespace tdms_impl
