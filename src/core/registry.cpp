#include "core/registry.h"

#include <dlfcn.h>

std::vector<std::shared_ptr<tdms::option>> fileHandles;
std::mutex mtx;

namespace tdms {
namespace {

// The library is linked so that its names mean its own objects: a program's own `mtx`, a common
// name, must never be taken for ours. But a program that refers to our `mtx` may hold the one copy
// of it that the loader made for the whole process. Only that copy carries our symbol version.
template <class T>
T& process_wide(T& own, const char* name)
{
    void* const seen = dlvsym(RTLD_DEFAULT, name, TDMS_SYMBOL_VERSION);
    return seen == nullptr ? own : *static_cast<T*>(seen);
}

}  // namespace

registry& open_files()
{
    static registry all{process_wide(fileHandles, "fileHandles"), process_wide(mtx, "mtx")};
    return all;
}

}  // namespace tdms
