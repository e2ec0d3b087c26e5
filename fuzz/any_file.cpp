// Takes any bytes for a file: reads all of it, appends to it, saves, and reads it again.
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "anything.h"
#include "streams.h"

namespace {

void require(bool true_of_any_file)
{
    if (!true_of_any_file) std::abort();
}

// Gives every group and channel a property, and every channel of a type that values have a value.
// The others keep what they state.
void append(void* file)
{
    read_properties(0, file);
    for (void* const group : groups_of(file)) {
        create_group_property_int8(group, "new", 1);
        for (void* const channel : channels_of(group)) {
            create_channel_property_int8(channel, "new", 1);
            for_each_element([channel]<class Element>(Element) {
                if (Element::code != get_channel_datatype(channel)) return;
                require(Element::set(channel, 1, Element::samples) == TDMS_OK);
            });
        }
    }
    create_file_property_string(file, "new", "text");
    void* added = nullptr;
    create_group(file, "new", &added);
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
    bool sound = true;
    with_anything(path.c_str(), "a", [&](void* file) {
        append(file);
        sound = false;
    });
    with_anything(path.c_str(), "r", [&](void* file) {
        read_anything(file);
        sound = true;
    });
    require(sound);
    close_streams();
    return 0;
}
