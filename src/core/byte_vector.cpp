#include "core/byte_vector.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace tdms {
namespace {

constexpr std::size_t huge_page = std::size_t{2} << 20;

}  // namespace

unsigned char* allocate_bytes(std::size_t size)
{
    void* bytes = nullptr;
    if (size < 2 * huge_page) {
        bytes = std::malloc(size);
    } else {
        const std::size_t whole_pages = (size + huge_page - 1) / huge_page * huge_page;
        bytes = std::aligned_alloc(huge_page, whole_pages);
        // A hint: whether it is taken makes no difference but in speed.
        if (bytes != nullptr) madvise(bytes, whole_pages, MADV_HUGEPAGE);
    }
    if (bytes == nullptr) throw std::bad_alloc();
    return static_cast<unsigned char*>(bytes);
}

void free_bytes(unsigned char* bytes)
{
    std::free(bytes);
}

}  // namespace tdms
