#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

// fopen() and fclose() remember what is open, and call the C library's: some failed openings of the
// first interface leave their stream open. They are called before and after main(), too.

// The C library's function of the name that is being defined.
#define REAL(name) \
    static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

inline std::FILE* open_streams[16];
inline bool (*opening_fails)() = nullptr;

extern "C" std::FILE* fopen(const char* path, const char* mode)
{
    REAL(fopen);
    const bool fails = opening_fails != nullptr && opening_fails();
    std::FILE* const stream = fails ? nullptr : real(path, mode);
    const auto free = std::find(std::begin(open_streams), std::end(open_streams), nullptr);
    if (free == std::end(open_streams)) std::abort();
    *free = stream;
    return stream;
}

extern "C" int fclose(std::FILE* stream)
{
    REAL(fclose);
    for (std::FILE*& open : open_streams) open = open == stream ? nullptr : open;
    return real(stream);
}

// Closes what is still open. @return how many there were
inline int close_streams()
{
    int count = 0;
    for (std::FILE* const stream : std::to_array(open_streams)) {
        if (stream != nullptr) count += fclose(stream) == 0;
    }
    return count;
}
