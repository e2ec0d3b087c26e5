#include "measurement_file.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "console.h"

namespace tool {
namespace {

// The property functions of one level of the tree.
struct level {
    int (*count)(void*);
    int (*names)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*get_string)(void*, const char*, char*, std::uint64_t);
#define TDMS_TOOL_GETTER(suffix, type, code) int (*get_##suffix)(void*, const char*, type*);
    TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_GETTER)
#undef TDMS_TOOL_GETTER
};

#define TDMS_TOOL_FILE_GETTER(suffix, type, code) get_file_property_##suffix,
#define TDMS_TOOL_GROUP_GETTER(suffix, type, code) get_group_property_##suffix,
#define TDMS_TOOL_CHANNEL_GETTER(suffix, type, code) get_channel_property_##suffix,
#define TDMS_TOOL_LEVEL(name, GETTER)                                                     \
    {                                                                                     \
        get_num_##name##_property, get_##name##_property, get_##name##_property_datatype, \
            get_##name##_property_string, TDMS_FIXED_SIZE_ELEMENTS(GETTER)                \
    }
constexpr level file_level = TDMS_TOOL_LEVEL(file, TDMS_TOOL_FILE_GETTER);
constexpr level group_level = TDMS_TOOL_LEVEL(group, TDMS_TOOL_GROUP_GETTER);
constexpr level channel_level = TDMS_TOOL_LEVEL(channel, TDMS_TOOL_CHANNEL_GETTER);

std::string string_property(const level& of, void* handle, const char* name)
{
    std::string buffer(60, '\0');
    while (of.get_string(handle, name, buffer.data(), buffer.size()) == TDMS_PROPERTY_BUFFER) {
        buffer.resize(2 * buffer.size());
    }
    buffer.resize(std::strlen(buffer.c_str()));
    return buffer;
}

property_value value_of(const level& of, void* handle, const char* name, int type)
{
    switch (type) {
        case TDMS_TYPE_STRING:
            return string_property(of, handle, name);
#define TDMS_TOOL_CASE(suffix, T, code)        \
    case code: {                               \
        T value{};                             \
        of.get_##suffix(handle, name, &value); \
        return value;                          \
    }
            TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_CASE)
#undef TDMS_TOOL_CASE
        default:
            return {};
    }
}

property_list properties_of(const level& of, void* handle)
{
    std::vector<const char*> names(static_cast<std::size_t>(of.count(handle)));
    of.names(handle, names.data());
    property_list list;
    for (const char* const name : names) {
        // The library does not find a name that goes on behind a zero byte.
        const int type = std::max(of.datatype(handle, name), int{TDMS_TYPE_VOID});
        list.push_back({name, type, value_of(of, handle, name, type)});
    }
    return list;
}

// Reads the names of groups and channels. The library does not tell their lengths, but they are
// numbers of 32 bits. Of the room for such a name, only what is used takes memory; if a process may
// not have that, none is longer than its file.
class name_reader {
  public:
    explicit name_reader(std::uint64_t file_size)
    {
        if (reserve(std::uint64_t{1} << 32)) return;
        if (!reserve(file_size + 1)) throw std::bad_alloc();
    }
    ~name_reader() { munmap(room_, size_); }
    name_reader(const name_reader&) = delete;
    name_reader& operator=(const name_reader&) = delete;

    const char* read(void* handle, int (*get_name)(void*, char*))
    {
        char* const name = static_cast<char*>(room_);
        get_name(handle, name);
        return name;
    }

  private:
    bool reserve(std::uint64_t size)
    {
        size_ = size;
        room_ = mmap(nullptr, size_, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        return room_ != MAP_FAILED;
    }

    void* room_ = nullptr;
    std::uint64_t size_ = 0;
};

group read_group(void* handle, name_reader& names)
{
    group read{names.read(handle, get_group_name), properties_of(group_level, handle), {}};
    std::vector<void*> handles(static_cast<std::size_t>(get_num_channel(handle)));
    get_channel(handle, handles.data());
    for (void* const each : handles) {
        channel c{each,
                  read.name + '/' + names.read(each, get_channel_name),
                  read.name.size(),
                  get_channel_datatype(each),
                  0,
                  properties_of(channel_level, each)};
        get_num_channel_data(each, &c.count);
        read.channels.push_back(std::move(c));
    }
    return read;
}

void* open_or_throw(const input& from)
{
    void* file = nullptr;
    try {
        const int status = open_file(from.path().c_str(), "r", &file);
        if (status != TDMS_OK) throw failure(message_of(status));
    } catch (const std::out_of_range& e) {
        throw failure(std::string("a data type that the format does not know (") + e.what() + ")");
    } catch (const std::bad_alloc&) {
        throw failure("out of memory");
    }
    return file;
}

#define TDMS_TOOL_READ(suffix, type, code)                \
    int get_values(void* handle, type* values)            \
    {                                                     \
        return get_channel_data_##suffix(handle, values); \
    }
TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_READ)
#undef TDMS_TOOL_READ

template <class T>
channel_values read_array(const channel& c)
{
    value_array<T> values{nullptr, c.count};
    read_or_throw([&] {
        values.items = std::make_unique_for_overwrite<T[]>(c.count);
        return get_values(c.handle, values.items.get());
    });
    return values;
}

}  // namespace

std::string message_of(int status)
{
    return std::string(get_error_description(status)) + " (" + std::to_string(status) + ")";
}

std::string type_name(int type)
{
    switch (type) {
        case TDMS_TYPE_VOID:
            return "none";
        case TDMS_TYPE_STRING:
            return "string";
#define TDMS_TOOL_NAME(suffix, T, code) \
    case code:                          \
        return #suffix;
            TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_NAME)
#undef TDMS_TOOL_NAME
        default:
            return "type " + std::to_string(static_cast<std::uint32_t>(type));
    }
}

std::uint32_t size_of_type(std::uint32_t type)
{
    switch (type) {
#define TDMS_TOOL_CASE(suffix, T, code) \
    case code:                          \
        return tdms::stored_size<T>;
        TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_CASE)
#undef TDMS_TOOL_CASE
        default:
            return 0;
    }
}

measurement_file::measurement_file(const input& from)
    : size_(from.size()), handle_(open_or_throw(from))
{
    size_ = std::max(size_, from.size());  // the library found one between them
    properties = properties_of(file_level, handle_.get());
    name_reader names(size_);
    std::vector<void*> handles(static_cast<std::size_t>(get_num_group(handle_.get())));
    get_group(handle_.get(), handles.data());
    for (void* const each : handles) groups.push_back(read_group(each, names));
}

channel_values measurement_file::read(const channel& c) const
{
    // What no file of this size can hold is not worth asking for memory.
    const std::uint32_t least =
        c.type == TDMS_TYPE_STRING ? 4 : size_of_type(static_cast<std::uint32_t>(c.type));
    if (least == 0) throw failure("values of " + type_name(c.type) + " cannot be read");
    if (c.count > size_ / least) throw failure(message_of(TDMS_CHANNEL_DATA_READ));
    switch (c.type) {
#define TDMS_TOOL_CASE(suffix, T, code) \
    case code:                          \
        return read_array<T>(c);
        TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_CASE)
#undef TDMS_TOOL_CASE
        default: {
            text_values texts;
            read_or_throw([&] {
                texts = read_texts_apart(c.handle, c.count);
                return TDMS_OK;
            });
            return texts;
        }
    }
}

void locate(const channel& c)
{
    // The library looks for the values before it refuses to read them as another type.
    int status = TDMS_CHANNEL_DATATYPE;
    read_or_throw([&] {
        status = c.type == TDMS_TYPE_INT8 ? get_channel_data_int16(c.handle, nullptr)
                                          : get_channel_data_int8(c.handle, nullptr);
        return status == TDMS_CHANNEL_DATATYPE ? TDMS_OK : status;
    });
}

std::vector<selected_channel> select(const measurement_file& file,
                                     const std::vector<std::string>& names)
{
    std::vector<selected_channel> found;
    const auto add_if = [&](auto wanted) {
        const std::size_t before = found.size();
        for (const group& g : file.groups) {
            for (const channel& c : g.channels) {
                if (wanted(g, c)) found.push_back({&g, &c});
            }
        }
        return found.size() != before;
    };
    if (names.empty()) add_if([](const group&, const channel&) { return true; });
    for (const std::string& name : names) {
        const bool a_group = std::any_of(file.groups.begin(), file.groups.end(),
                                         [&](const group& g) { return g.name == name; });
        if (!add_if([&](const group&, const channel& c) { return c.name == name; }) &&
            !add_if([&](const group& g, const channel&) { return g.name == name; }) && !a_group) {
            throw usage_error("the file has no channel or group " + in_quotes(name));
        }
    }
    return found;
}

}  // namespace tool
