#pragma once

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "tdms.h"

// The thirteen element types: the functions of each, and values of it that a wrong width, sign or
// conversion would change. Property functions are listed by level: file, group, channel.
template <class T>
struct property_functions {
    int (*create)(void*, const char*, T);
    int (*get)(void*, const char*, T*);
};

// The getters of strings take a buffer; these are like the others.
#define TEST_STRING_GETTER(level)                                                                \
    inline int get_##level##_property_string(void* owner, const char* name, const char** string) \
    {                                                                                            \
        static thread_local char buffer[64];                                                     \
        *string = buffer;                                                                        \
        return get_##level##_property_string(owner, name, buffer, sizeof buffer);                \
    }
TEST_STRING_GETTER(file)
TEST_STRING_GETTER(group)
TEST_STRING_GETTER(channel)

// So does the reader of strings. It keeps what it read last.
inline int tdms_read_string(void* channel, std::uint64_t first, std::uint64_t count,
                            const char** strings)
{
    static thread_local std::vector<char> buffer;
    static thread_local std::vector<const char*> pointers;
    std::uint64_t size = 0;
    if (const int status = tdms_get_string_size(channel, first, count, &size)) return status;
    buffer.resize(size);
    pointers.resize(count + 1);
    const int status =
        tdms_read_string(channel, first, count, buffer.data(), size, pointers.data());
    if (status == TDMS_OK) std::copy_n(pointers.begin(), count, strings);
    return status;
}

#define TEST_ELEMENT(suffix, type, type_code, ...)                              \
    struct element_##suffix {                                                   \
        using value = type;                                                     \
        static constexpr const char* name = #suffix;                            \
        static constexpr int code = type_code;                                  \
        static constexpr type samples[] = {__VA_ARGS__};                        \
        static constexpr auto set = set_channel_data_##suffix;                  \
        static constexpr auto get = get_channel_data_##suffix;                  \
        static constexpr auto append = tdms_append_##suffix;                    \
        static constexpr int (*read)(void*, std::uint64_t, std::uint64_t,       \
                                     type*) = tdms_read_##suffix;               \
        static constexpr property_functions<type> properties[] = {              \
            {create_file_property_##suffix, get_file_property_##suffix},        \
            {create_group_property_##suffix, get_group_property_##suffix},      \
            {create_channel_property_##suffix, get_channel_property_##suffix}}; \
    };

TEST_ELEMENT(int8, std::int8_t, 1, -128, -1, 127)
TEST_ELEMENT(int16, std::int16_t, 2, -32768, 0x1234, -2)
TEST_ELEMENT(int32, std::int32_t, 3, INT32_MIN, 0x12345678, -3)
TEST_ELEMENT(int64, std::int64_t, 4, INT64_MIN, 0x123456789ABCDEF0, -4)
TEST_ELEMENT(uint8, std::uint8_t, 5, 0, 255, 128)
TEST_ELEMENT(uint16, std::uint16_t, 6, 65535, 0x1234, 0)
TEST_ELEMENT(uint32, std::uint32_t, 7, UINT32_MAX, 0x12345678, 0)
TEST_ELEMENT(uint64, std::uint64_t, 8, UINT64_MAX, 0x123456789ABCDEF0, 0)
TEST_ELEMENT(float, float, 9, -0.0F, 1.5F, std::numeric_limits<float>::denorm_min())
TEST_ELEMENT(double, double, 10, -0.0, 1e-300, std::numeric_limits<double>::infinity())
TEST_ELEMENT(bool, bool, 33, true, false, true)
TEST_ELEMENT(timestamp, timestamp_fields, 68, {2024, 2, 29, 23, 59, 58, 999999},
             {1970, 1, 2, 0, 0, 1, 0}, {2037, 12, 31, 12, 0, 59, 1})

// All equal, because a process hands out its first stored strings.
TEST_ELEMENT(string, const char*, 32, "a string of many letters", "a string of many letters",
             "a string of many letters")

// Strings come last: what is read of them stays in memory.
template <class Use>
void for_each_element(Use use)
{
    const auto each = [&use]<class... Element>(Element... element) { (use(element), ...); };
    each(element_int8{}, element_int16{}, element_int32{}, element_int64{}, element_uint8{},
         element_uint16{}, element_uint32{}, element_uint64{}, element_float{}, element_double{},
         element_bool{}, element_timestamp{}, element_string{});
}

template <class Use>
void with_element(int type, Use use)
{
    for_each_element([&]<class Element>(Element element) {
        if (Element::code == type) use(element);
    });
}

template <class T>
bool is_same(const T& a, const T& b)
{
    if constexpr (std::is_same_v<T, const char*>)
        return std::string_view(a) == b;
    else
        return std::memcmp(&a, &b, sizeof a) == 0;
}

// The functions for properties of any type, by level.
struct property_level {
    int invalid_handle;
    int absent;
    int repeated;
    int (*count)(void*);
    int (*list)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*remove)(void*, const char*);
    int (*get_string)(void*, const char*, char*, std::uint64_t);
};
#define PROPERTY_LEVEL(name, NAME)                                                            \
    {                                                                                         \
        TDMS_##NAME##_HANDLE, TDMS_##NAME##_PROPERTY_NAME, TDMS_##NAME##_PROPERTY_REPEATED,   \
            get_num_##name##_property, get_##name##_property, get_##name##_property_datatype, \
            delete_##name##_property, get_##name##_property_string                            \
    }
constexpr property_level levels[] = {PROPERTY_LEVEL(file, FILE), PROPERTY_LEVEL(group, GROUP),
                                     PROPERTY_LEVEL(channel, CHANNEL)};
