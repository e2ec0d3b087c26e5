#include "measurement_file.h"

#include <algorithm>

#include "console.h"
#include "core/data_types.h"

namespace tool {
namespace {

// The property functions of one level of the tree.
struct level {
    int (*count)(void*);
    int (*names)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*get_string)(void*, const char*, const char**, std::uint64_t*);
    int (*get_nanoseconds)(void*, const char*, std::int64_t*);
#define TDMS_TOOL_GETTER(suffix, type, code) int (*get_##suffix)(void*, const char*, type*);
    TDMS_NUMBER_ELEMENTS(TDMS_TOOL_GETTER)
#undef TDMS_TOOL_GETTER
};

#define TDMS_TOOL_FILE_GETTER(suffix, type, code) get_file_property_##suffix,
#define TDMS_TOOL_GROUP_GETTER(suffix, type, code) get_group_property_##suffix,
#define TDMS_TOOL_CHANNEL_GETTER(suffix, type, code) get_channel_property_##suffix,
#define TDMS_TOOL_LEVEL(name, GETTER)                                                     \
    {                                                                                     \
        get_num_##name##_property, get_##name##_property, get_##name##_property_datatype, \
            tdms_get_##name##_property_string, tdms_get_##name##_property_nanoseconds,    \
            TDMS_NUMBER_ELEMENTS(GETTER)                                                  \
    }
constexpr level file_level = TDMS_TOOL_LEVEL(file, TDMS_TOOL_FILE_GETTER);
constexpr level group_level = TDMS_TOOL_LEVEL(group, TDMS_TOOL_GROUP_GETTER);
constexpr level channel_level = TDMS_TOOL_LEVEL(channel, TDMS_TOOL_CHANNEL_GETTER);

void throw_on_failure(int status)
{
    if (status != TDMS_OK) throw failure(message_of(status));
}

std::string string_property(const level& of, void* handle, const char* name)
{
    const char* text = nullptr;
    std::uint64_t length = 0;
    throw_on_failure(of.get_string(handle, name, &text, &length));
    return {text, length};
}

nanoseconds time_property(const level& of, void* handle, const char* name)
{
    nanoseconds time{};
    throw_on_failure(of.get_nanoseconds(handle, name, &time.count));
    return time;
}

property_value value_of(const level& of, void* handle, const char* name, int type)
{
    switch (type) {
        case TDMS_TYPE_STRING:
            return string_property(of, handle, name);
        case TDMS_TYPE_TIMESTAMP:
            return time_property(of, handle, name);
#define TDMS_TOOL_CASE(suffix, T, code)        \
    case code: {                               \
        T value{};                             \
        of.get_##suffix(handle, name, &value); \
        return value;                          \
    }
            TDMS_NUMBER_ELEMENTS(TDMS_TOOL_CASE)
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
        // The library does not find a name that continues after a zero byte.
        const int type = std::max(of.datatype(handle, name), int{TDMS_TYPE_VOID});
        list.push_back({name, type, value_of(of, handle, name, type)});
    }
    return list;
}

std::string name_of(void* handle, int (*get_name)(void*, const char**, std::uint64_t*))
{
    const char* name = nullptr;
    std::uint64_t length = 0;
    throw_on_failure(get_name(handle, &name, &length));
    return {name, length};
}

group read_group(void* handle)
{
    group read{name_of(handle, tdms_get_group_name), properties_of(group_level, handle), {}};
    std::vector<void*> handles(static_cast<std::size_t>(get_num_channel(handle)));
    get_channel(handle, handles.data());
    for (void* const each : handles) {
        channel c{each,
                  read.name + '/' + name_of(each, tdms_get_channel_name),
                  read.name.size(),
                  get_channel_datatype(each),
                  0,
                  0,
                  properties_of(channel_level, each)};
        throw_on_failure(tdms_get_num_values(each, &c.count, &c.lost));
        read.channels.push_back(std::move(c));
    }
    return read;
}

void* open_or_throw(const input& from)
{
    void* file = nullptr;
    const int status = tdms_open(from.path().c_str(), "r", &file);
    if (status == TDMS_FILE_READ) {
        throw failure(message_of(status) +
                      R"(; "tdms check" shows where, "tdms salvage" recovers the rest)");
    }
    throw_on_failure(status);
    return file;
}

#define TDMS_TOOL_READ(suffix, type, code)                                               \
    int get_values(void* handle, std::uint64_t first, std::uint64_t count, type* values) \
    {                                                                                    \
        return tdms_read_##suffix(handle, first, count, values);                         \
    }
TDMS_NUMBER_ELEMENTS(TDMS_TOOL_READ)
#undef TDMS_TOOL_READ

template <class T>
channel_values read_array(const channel& c, std::uint64_t first, std::uint64_t count)
{
    value_array<T> values{std::make_unique_for_overwrite<T[]>(count)};
    throw_on_failure(get_values(c.handle, first, count, values.items.get()));
    return values;
}

channel_values read_times(const channel& c, std::uint64_t first, std::uint64_t count)
{
    time_values values{std::make_unique_for_overwrite<std::int64_t[]>(count)};
    throw_on_failure(tdms_read_nanoseconds(c.handle, first, count, values.counts.get()));
    return values;
}

channel_values read_strings(const channel& c, std::uint64_t first, std::uint64_t count)
{
    std::uint64_t size = 0;
    throw_on_failure(tdms_get_string_size(c.handle, first, count, &size));
    string_values values;
    values.bytes = std::make_unique_for_overwrite<char[]>(size);
    values.texts.resize(count + 1);
    throw_on_failure(
        tdms_read_string(c.handle, first, count, values.bytes.get(), size, values.texts.data()));
    return values;
}

}  // namespace

std::string message_of(int status)
{
    std::string text = tdms_status_text(status);
    text.pop_back();  // the sentence's full stop
    return text + " (" + std::to_string(status) + ")";
}

std::string type_name(int type)
{
    switch (type) {
        case TDMS_TYPE_VOID:
            return "none";
        case TDMS_TYPE_STRING:
            return "string";
        case TDMS_TYPE_TIMESTAMP:
            return "timestamp";
#define TDMS_TOOL_NAME(suffix, T, code) \
    case code:                          \
        return #suffix;
            TDMS_NUMBER_ELEMENTS(TDMS_TOOL_NAME)
#undef TDMS_TOOL_NAME
        default:
            return "type " + std::to_string(static_cast<std::uint32_t>(type));
    }
}

measurement_file::measurement_file(const input& from) : handle_(open_or_throw(from))
{
    properties = properties_of(file_level, handle_.get());
    std::vector<void*> handles(static_cast<std::size_t>(get_num_group(handle_.get())));
    get_group(handle_.get(), handles.data());
    for (void* const each : handles) groups.push_back(read_group(each));
}

channel_values read_values(const channel& c, std::uint64_t first, std::uint64_t count)
{
    switch (c.type) {
#define TDMS_TOOL_CASE(suffix, T, code) \
    case code:                          \
        return read_array<T>(c, first, count);
        TDMS_NUMBER_ELEMENTS(TDMS_TOOL_CASE)
#undef TDMS_TOOL_CASE
        case TDMS_TYPE_TIMESTAMP:
            return read_times(c, first, count);
        default:
            return read_strings(c, first, count);
    }
}

std::vector<double> read_numbers(const channel& c)
{
    std::vector<double> values(c.count);
    throw_on_failure(tdms_read_double(c.handle, 0, c.count, values.data()));
    return values;
}

std::string lost_values(const channel& c)
{
    const std::string lost = count_of(c.lost, "value");
    const bool supported = c.type == TDMS_TYPE_STRING ||
                           tdms_impl::DataSize.at(static_cast<std::uint32_t>(c.type)) != 0;
    return supported ? lost + " lost: stated by the file and not in it"
                     : lost + " of " + type_name(c.type) + " cannot be read";
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
