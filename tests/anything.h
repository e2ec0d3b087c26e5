#pragma once

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <vector>

#include "elements.h"

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
}

// A caller would size the array by the count. One that no small file can hold must be refused.
template <class Element>
void read_values(void* channel, std::uint64_t count)
{
    using T = typename Element::value;
    const bool impossible = count > 65536;
    const std::unique_ptr<T[]> values(impossible ? nullptr : new T[count]);
    if (Element::get(channel, values.get()) == TDMS_OK && impossible) std::abort();
}

inline void read_channel(void* channel)
{
    std::uint64_t count = 0;
    get_num_channel_data(channel, &count);
    const int type = get_channel_datatype(channel);
    for_each_element([&]<class Element>(Element) {
        if (Element::code == type) read_values<Element>(channel, count);
    });
    if (type == element_double::code)
        read_values<element_int8>(channel, count);
    else
        read_values<element_double>(channel, count);
}

template <class Use>
void for_each_handle(void* owner, int (*count)(void*), int (*list)(void*, void**), Use use)
{
    std::vector<void*> handles(static_cast<std::size_t>(count(owner)));
    list(owner, handles.data());
    for (void* const handle : handles) use(handle);
}

// A data type that the format does not know, and an object of no group behind one of a group, are
// failed lookups.
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
    for_each_handle(file, get_num_group, get_group, [](void* group) {
        read_properties(1, group);
        for_each_handle(group, get_num_channel, get_channel, [](void* channel) {
            read_properties(2, channel);
            pass_failed_lookups([&] { read_channel(channel); });
        });
    });
}

// Opens a file in a mode, hands it to `use` if it opens, and closes it.
template <class Use>
void with_anything(const char* path, const char* mode, Use use)
{
    void* file = nullptr;
    pass_failed_lookups([&] { open_file(path, mode, &file); });
    if (file == nullptr) return;
    use(file);
    close_file(&file);
}
