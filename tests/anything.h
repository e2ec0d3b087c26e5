#pragma once

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "elements.h"
#include "handles.h"

// What can be done with a file that may hold anything: list all of it, read every property as every
// type, and every channel as its own type and as another.

inline void read_properties(std::size_t level, void* owner)
{
    std::vector<const char*> names(static_cast<std::size_t>(levels[level].count(owner)));
    levels[level].list(owner, names.data());
    for (const char* const name : names) {
        levels[level].datatype(owner, name);
        for_each_element([&]<class Element>(Element) {
            typename Element::value value{};
            Element::properties[level].get(owner, name, &value);
        });
    }

    // The functions for any object list as many, and find each by its name.
    const char* name = nullptr;
    std::uint64_t length = 0;
    tdms_value value{};
    for (std::size_t left = names.size() + 1; left != 0; --left) {
        if (tdms_next_property(owner, &name, &length, &value) != TDMS_OK) std::abort();
        if ((name == nullptr) != (left == 1)) std::abort();
        if (name != nullptr && tdms_get_property(owner, name, length, &value) != TDMS_OK)
            std::abort();
    }
}

inline void read_channel(void* channel)
{
    std::uint64_t count = 0;
    get_num_channel_data(channel, &count);
    // A caller sizes the array by the count. One that no small file can hold must be rejected.
    const bool impossible = count > 65536;
    const int type = get_channel_datatype(channel);
    const int other = type == element_double::code ? element_int8::code : element_double::code;
    for_each_element([&]<class Element>(Element) {
        if (Element::code != type && Element::code != other) return;
        using T = typename Element::value;
        const std::unique_ptr<T[]> values(impossible ? nullptr : new T[count]);
        if (Element::get(channel, values.get()) == TDMS_OK && impossible) std::abort();
    });
}

// A data type that the format does not know, and an object outside a group that is listed after one
// of its channels, are failed lookups.
template <class Call>
void pass_failed_lookups(Call call)
{
    try {
        call();
    } catch (const std::out_of_range&) {
    }
}

inline void read_anything(void* file)
{
    read_properties(0, file);
    for (void* const group : groups_of(file)) {
        read_properties(1, group);
        for (void* const channel : channels_of(group)) {
            read_properties(2, channel);
            pass_failed_lookups([channel] { read_channel(channel); });
        }
    }
}

// Opens a file in a mode, hands it to `use` if it opens, and closes it.
template <class Use>
void with_anything(const char* path, const char* mode, Use use)
{
    file_handle file;
    pass_failed_lookups([&] { open_file(path, mode, &file.handle); });
    if (file.handle != nullptr) use(file.handle);
}
