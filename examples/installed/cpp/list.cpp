// list: prints the channels of a measurement file, and how many values each of them has.
//
//     cmake -S . -B build && cmake --build build
//     build/list sine.tdms

#include <tdms.h>

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

struct closer {
    void operator()(void* file) const { close_file(&file); }
};
using file_handle = std::unique_ptr<void, closer>;

std::vector<void*> list(void* parent, int (*count)(void*), int (*get)(void*, void**))
{
    std::vector<void*> handles(static_cast<std::size_t>(count(parent)));
    get(parent, handles.data());
    return handles;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: list FILE\n";
        return 2;
    }
    void* opened = nullptr;
    if (const int status = open_file(argv[1], "r", &opened)) {
        std::cerr << argv[1] << ": " << get_error_description(status) << '\n';
        return 1;
    }
    const file_handle file(opened);
    // No name is longer than the file that it stands in.
    std::string group_name(std::filesystem::file_size(argv[1]) + 1, '\0');
    std::string channel_name = group_name;
    for (void* const group : list(file.get(), get_num_group, get_group)) {
        get_group_name(group, group_name.data());
        for (void* const channel : list(group, get_num_channel, get_channel)) {
            std::uint64_t count = 0;
            get_channel_name(channel, channel_name.data());
            get_num_channel_data(channel, &count);
            std::cout << group_name.c_str() << '/' << channel_name.c_str() << ": " << count
                      << " values\n";
        }
    }
    return 0;
}
