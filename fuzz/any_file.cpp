// Takes any bytes for a file: reads all of it, appends to it, saves, and reads it again.
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

#include "anything.h"

// The library's streams, in front of the C library's functions. Those that a failed opening leaves
// open by rule are closed behind each input. Both are called before and after main(), too.
static std::FILE* open_streams[16];

extern "C" std::FILE* fopen(const char* path, const char* mode)
{
    static const auto real = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen"));
    std::FILE* const stream = real(path, mode);
    *std::find(std::begin(open_streams), std::end(open_streams), nullptr) = stream;
    return stream;
}

extern "C" int fclose(std::FILE* stream)
{
    static const auto real = reinterpret_cast<decltype(&fclose)>(dlsym(RTLD_NEXT, "fclose"));
    for (std::FILE*& open : open_streams) open = open == stream ? nullptr : open;
    return real(stream);
}

namespace {

void require(bool true_of_any_file)
{
    if (!true_of_any_file) std::abort();
}

// Stages a value on every channel of a type that values have. The others keep what they state.
void stage_on_all(void* group)
{
    for_each_handle(group, get_num_channel, get_channel, [](void* channel) {
        for_each_element([channel]<class Element>(Element) {
            if (Element::code == get_channel_datatype(channel)) {
                require(Element::set(channel, 1, Element::samples) == TDMS_OK);
            }
        });
    });
}

void append(void* file)
{
    void* group = nullptr;
    read_properties(0, file);
    for_each_handle(file, get_num_group, get_group, stage_on_all);
    create_file_property_string(file, "new", "text");
    create_group(file, "new", &group);
    require(save_file(file) == TDMS_OK && save_file(file) == TDMS_OK);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int memory = memfd_create("fuzz", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    require(ftruncate(memory, 0) == 0 &&
            pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
    with_anything(path.c_str(), "r", read_anything);
    bool appended = false;
    with_anything(path.c_str(), "a", [&](void* file) {
        append(file);
        appended = true;
    });
    bool opened = false;
    with_anything(path.c_str(), "r", [&](void* file) {
        read_anything(file);
        opened = true;
    });
    require(opened || !appended);
    for (std::FILE* const stream : std::to_array(open_streams)) {
        if (stream != nullptr) std::fclose(stream);
    }
    return 0;
}
