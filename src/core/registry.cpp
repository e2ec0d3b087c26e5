#include "core/registry.h"

#include <dlfcn.h>
#include <link.h>

// The registry, under the names by which programs may link to it.
TDMS_API std::vector<std::shared_ptr<tdms_impl::option>> fileHandles;
TDMS_API std::mutex mtx;

namespace tdms_impl {
namespace {

// Our names bind to ourselves: a program's own `mtx` must not be taken for ours. A program that
// refers to *our* `mtx` holds the process's one copy, carrying our symbol version; only the loader
// can distinguish the two.
template <class T>
T& process_wide(T& own, const char* name) noexcept
{
    void* const program = dlopen(nullptr, RTLD_LAZY);
    link_map* program_map = nullptr;
    if (program == nullptr || dlinfo(program, RTLD_DI_LINKMAP, &program_map) != 0) return own;
    void* const seen = dlvsym(program, name, TDMS_SYMBOL_VERSION);
    Dl_info info;
    void* holder = nullptr;
    if (seen == nullptr || dladdr1(seen, &info, &holder, RTLD_DL_LINKMAP) == 0) return own;
    return holder == program_map ? *static_cast<T*>(seen) : own;
}

}  // namespace

registry& open_files() noexcept
{
    static registry all{process_wide(fileHandles, "fileHandles"), process_wide(mtx, "mtx")};
    return all;
}

namespace {

// Looked up while the library is loaded: the loader's lock and the initialisation of a static,
// taken by two threads in different orders, would wait for each other.
[[maybe_unused]] const registry& looked_up_at_load = open_files();

}  // namespace
}  // namespace tdms_impl
