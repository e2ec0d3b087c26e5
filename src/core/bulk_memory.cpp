#include "core/bulk_memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace tdms {
namespace {

constexpr std::size_t huge_page = std::size_t{2} << 20;

// A hint: whether it is taken makes no difference but in speed.
void prefer_huge_pages(unsigned char* memory, std::size_t size)
{
    const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(memory) % huge_page;
    const std::size_t skip = misaligned == 0 ? 0 : huge_page - misaligned;
    if (size < skip + huge_page) return;
    madvise(memory + skip, (size - skip) / huge_page * huge_page, MADV_HUGEPAGE);
}

}  // namespace

void reserve_bulk(byte_vector& bytes, std::size_t size)
{
    if (size <= bytes.capacity()) return;
    byte_vector larger;
    larger.reserve(size);
    if (size >= 2 * huge_page) prefer_huge_pages(larger.data(), larger.capacity());
    larger.insert(larger.end(), bytes.begin(), bytes.end());
    bytes.swap(larger);
}

}  // namespace tdms
