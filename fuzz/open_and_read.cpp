// Opens any bytes as a file, walks its tree, and reads every property and every channel as every
// type. What is thrown for an unknown type or a foreign object is part of the interface.
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tdms.h"

namespace {

// More values than any input can hold: such a count must be refused without an array.
constexpr std::uint64_t most_values = 1 << 16;

template <class T>
void read_values(int (*get)(void*, T*), void* channel, std::uint64_t count)
{
    const bool impossible = count > most_values;
    std::vector<timestamp_fields> memory(impossible ? 0 : count);
    const int status = get(channel, reinterpret_cast<T*>(impossible ? nullptr : memory.data()));
    if (impossible && status == 0) __builtin_trap();
}

void read_channel(void* channel)
{
    std::vector<const char*> names(static_cast<std::size_t>(get_num_channel_property(channel)));
    get_channel_property(channel, names.data());
    for (const char* name : names) {
        char buffer[64];
        timestamp_fields time;
        get_channel_property_string(channel, name, buffer, sizeof buffer);
        get_channel_property_timestamp(channel, name, &time);
    }
    std::uint64_t count = 0;
    get_num_channel_data(channel, &count);
    switch (get_channel_datatype(channel)) {
        case TDMS_TYPE_INT32:
            return read_values(get_channel_data_int32, channel, count);
        case TDMS_TYPE_DOUBLE:
            return read_values(get_channel_data_double, channel, count);
        case TDMS_TYPE_BOOL:
            return read_values(get_channel_data_bool, channel, count);
        case TDMS_TYPE_STRING:
            return read_values(get_channel_data_string, channel, count);
        case TDMS_TYPE_TIMESTAMP:
            return read_values(get_channel_data_timestamp, channel, count);
        default:
            return read_values(get_channel_data_int8, channel, count);
    }
}

void walk(void* file)
{
    std::vector<void*> groups(static_cast<std::size_t>(get_num_group(file)));
    get_group(file, groups.data());
    for (void* group : groups) {
        std::vector<void*> channels(static_cast<std::size_t>(get_num_channel(group)));
        get_channel(group, channels.data());
        for (void* channel : channels) {
            try {
                read_channel(channel);
            } catch (const std::out_of_range&) {
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int memory = memfd_create("fuzz", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    if (ftruncate(memory, 0) != 0 || pwrite(memory, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    // A file that is refused for its metadata stays open by rule; here too many would.
    for (int left_open = memory + 1; left_open != memory + 8; ++left_open) close(left_open);
    void* file = nullptr;
    try {
        if (open_file(path.c_str(), "r", &file) == 0) walk(file);
    } catch (const std::out_of_range&) {
    }
    if (file != nullptr) close_file(&file);
    return 0;
}
