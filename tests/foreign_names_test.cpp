// A program whose own names are those that the library has within and without. It must link, and
// the library must go on using its own. So the library's functions are asked for at run time.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tdms.h"

int mtx[64];
char fileHandles[256];

class group {
  public:
    virtual ~group() = default;
    int value = 1;
};
class channel : public group {};
class property : public group {};
class option {
  public:
    static int open_file() { return 1; }
};

extern "C" int delete_file(const char*)
{
    std::abort();
}
extern "C" int get_num_channel_data(void*, uint64_t*)
{
    std::abort();
}
unsigned int read_uint32(const unsigned char*, bool)
{
    std::abort();
}
int read_leadIn(unsigned char*, unsigned long&, unsigned long&)
{
    std::abort();
}

int main()
{
    const channel own;
    const property other;
    int failed = own.value + other.value + option::open_file() != 3;
    for (int& word : mtx) word = -1;

    const std::string path = (std::filesystem::temp_directory_path() /
                              ("tdms_foreign_names_" + std::to_string(getpid())))
                                 .string();
    const int32_t written = 42;
    int32_t read = 0;
    void* file = nullptr;
    void* g = nullptr;
    void* c = nullptr;
    failed += open_file(path.c_str(), "w", &file) != 0 || create_group(file, "g", &g) != 0 ||
              create_channel(g, "c", &c) != 0 || set_channel_data_int32(c, 1, &written) != 0 ||
              save_file(file) != 0 || close_file(&file) != 0;
    failed += open_file(path.c_str(), "r", &file) != 0 || get_group(file, &g) != 0 ||
              get_channel(g, &c) != 0 || get_channel_data_int32(c, &read) != 0 || read != written ||
              close_file(&file) != 0;
    // The program's own objects were not taken for the library's.
    for (const int word : mtx) failed += word != -1;
    for (const char byte : fileHandles) failed += byte != 0;
    using remove_function = int (*)(const char*);
    const auto remove = reinterpret_cast<remove_function>(dlsym(RTLD_NEXT, "delete_file"));
    failed += remove(path.c_str()) != 0;
    return failed;
}
