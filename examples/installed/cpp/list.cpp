// list: prints the channels of a measurement file, and how many values each of them has.
//
//     cmake -S . -B build && cmake --build build
//     build/list sine.tdms

#include <tdms.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <string_view>
#include <vector>

namespace {

struct closer {
    void operator()(void* file) const { tdms_close(&file); }
};
using file_handle = std::unique_ptr<void, closer>;

std::vector<void*> list(void* parent, int (*count)(void*), int (*get)(void*, void**))
{
    std::vector<void*> handles(static_cast<std::size_t>(count(parent)));
    get(parent, handles.data());
    return handles;
}

std::string_view name_of(void* handle, int (*get)(void*, const char**, std::uint64_t*))
{
    const char* name = nullptr;
    std::uint64_t length = 0;
    get(handle, &name, &length);
    return {name, length};
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: list FILE\n";
        return 2;
    }
    void* opened = nullptr;
    if (const int status = tdms_open(argv[1], "r", &opened)) {
        std::cerr << argv[1] << ": " << tdms_status_text(status) << '\n';
        return 1;
    }
    const file_handle file(opened);
    for (void* const group : list(file.get(), get_num_group, get_group)) {
        for (void* const channel : list(group, get_num_channel, get_channel)) {
            std::uint64_t count = 0;
            const int status = tdms_get_num_values(channel, &count, nullptr);
            std::cout << name_of(group, tdms_get_group_name) << '/'
                      << name_of(channel, tdms_get_channel_name) << ": ";
            if (status == 0) {
                std::cout << count << " values\n";
            } else {
                std::cout << tdms_status_text(status) << '\n';
            }
        }
    }
    return 0;
}
