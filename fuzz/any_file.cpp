// Takes any bytes for a file: reads all of it, appends to it, saves, and reads it again, by both
// interfaces; and follows it while it grows to what it is.
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

// Calls `use(element, channel)` for every channel of a type that values have.
template <class Use>
void for_each_typed_channel(void* file, Use use)
{
    for (void* const group : groups_of(file)) {
        for (void* const channel : channels_of(group)) {
            const auto use_channel = [&](auto element) { use(element, channel); };
            with_element(get_channel_datatype(channel), use_channel);
        }
    }
}

// Gives every group a property, and every channel one and a value. Those of unknown types keep what
// they state.
void append(void* file)
{
    for (void* const group : groups_of(file)) create_group_property_int8(group, "new", 1);
    for_each_typed_channel(file, []<class Element>(Element, void* channel) {
        create_channel_property_int8(channel, "new", 1);
        require(Element::set(channel, 1, Element::samples) == TDMS_OK);
    });
    create_file_property_string(file, "new", "a string");
    void* added = nullptr;
    create_group(file, "new", &added);
    require(save_file(file) == TDMS_OK && save_file(file) == TDMS_OK);
}

// A number that the input chooses.
std::uint64_t choose(std::uint64_t seed, std::uint64_t end)
{
    return end == 0 ? 0 : seed * 0x9E3779B97F4A7C15u % end;
}

// Reads some ranges of every channel as its type and as doubles. What is there can be read, but for
// strings: the table of a block of them is looked at only then.
void read_ranges(void* file, std::uint64_t seed)
{
    for_each_typed_channel(file, [seed]<class Element>(Element, void* channel) {
        std::uint64_t count = 0;
        require(tdms_get_num_values(channel, &count, nullptr) == TDMS_OK);
        const std::uint64_t first = choose(seed, count + 1);
        const std::uint64_t part = choose(seed / 3, count - first + 1);
        const auto values = std::make_unique<typename Element::value[]>(part);
        const int status = Element::read(channel, first, part, values.get());
        const bool damaged = status == TDMS_CHANNEL_DATA_READ && Element::code == TDMS_TYPE_STRING;
        require(status == TDMS_OK || damaged);
        require(Element::read(channel, first, count - first + 1, values.get()) != TDMS_OK);
        tdms_read_double(channel, first, part, std::make_unique<double[]>(part).get());
    });
}

// Appends a value to every channel that can have one.
void append_values(void* file)
{
    for_each_typed_channel(file, []<class Element>(Element, void* channel) {
        require(Element::append(channel, 1, Element::samples) == TDMS_OK);
    });
    void* added = nullptr;
    tdms_create_group(file, "newer", &added);
    require(tdms_save(file) == TDMS_OK);
}

void set_content(int memory, const std::uint8_t* data, std::uint64_t size)
{
    require(ftruncate(memory, 0) == 0 &&
            pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
}

// Opens what is intact of the beginning of a file, and takes in the rest of it.
void follow(const std::string& path, int memory, const std::uint8_t* data, std::size_t size)
{
    const std::uint64_t seed = size == 0 ? 0 : data[size / 2] + size;
    set_content(memory, data, choose(seed, size + 1));
    file_handle file;
    if (tdms_open_partial(path.c_str(), &file.handle, nullptr) != TDMS_OK) return;
    read_ranges(file.handle, seed);
    require(pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
    std::uint64_t rest = 0;
    require(tdms_refresh(file.handle, &rest) == TDMS_OK);
    read_ranges(file.handle, seed);
    file_handle complete;
    const bool intact = tdms_open(path.c_str(), "a", &complete.handle) == TDMS_OK;
    require(intact == (rest == 0));
    if (!intact) return;
    read_ranges(complete.handle, seed + 1);
    append_values(complete.handle);
    read_ranges(complete.handle, seed);
    require(tdms_refresh(file.handle, &rest) == TDMS_OK && rest == 0);
    read_ranges(file.handle, seed + 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int memory = memfd_create("fuzz", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    set_content(memory, data, size);
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
    follow(path, memory, data, size);
    close_streams();
    return 0;
}
