#pragma once

#include <array>
#include <memory>

#include "elements.h"
#include "handles.h"

// A program's life with a file that holds everything there is. Every call into the library goes
// through `call(function)`, which makes of it what its test is about and returns a status. A check
// is a call, too: it gives true for what should not be.

// The file, its group, and a channel.
using owners = std::array<void*, 3>;

// In three saves they are more texts than the storage has room for in one piece of memory.
constexpr std::size_t staged_values = 24;

template <class Element, class Call>
void stage_samples(void* channel, Call call)
{
    using other =
        std::conditional_t<Element::code == element_int8::code, element_int16, element_int8>;
    typename Element::value values[staged_values];
    for (std::size_t i = 0; i != staged_values; ++i) values[i] = Element::samples[i % 3];
    call([&] { return Element::set(channel, staged_values, values); });
    call([&] { return other::set(channel, 0, nullptr) != TDMS_CHANNEL_DATATYPE; });
}

// Two saves: properties of each type on each level and a channel of each type, then the values
// again with one new property.
template <class Call>
void write_everything(const char* path, Call call)
{
    file_handle file;
    void* group = nullptr;
    call([&] { return open_file(path, "w", &file.handle); });
    call([&] { return create_group(file.handle, "g", &group); });
    for_each_element([&]<class Element>(Element) {
        owners all = {file.handle, group, nullptr};
        call([&] { return create_channel(group, Element::name, &all[2]); });
        for (std::size_t i = 0; i != all.size(); ++i) {
            const auto create = Element::properties[i].create;
            call([&] { return create(all[i], Element::name, Element::samples[i]); });
        }
        stage_samples<Element>(all[2], call);
    });
    call([&] { return save_file(file.handle); });
    call([&] { return get_num_file_property(file.handle) + get_num_group_property(group); });
    call([&] { return create_file_property_string(file.handle, "new", "later"); });
    call([&] { return save_file(file.handle); });
    call([&] { return close_file(&file.handle); });
}

// Calls use(Element, owners) for every channel of a file with everything.
template <class Call, class Use>
void for_each_channel(void* file, Call call, Use use)
{
    void* group = nullptr;
    call([&] { return get_group(file, &group); });
    void* channels[13] = {};
    call([&] { return get_channel(group, channels); });
    for_each_element([&]<class Element>(Element element) {
        for (void* const channel : channels) {
            char name[16];
            call([&] { return get_channel_name(channel, name); });
            if (name == std::string_view(Element::name)) use(element, owners{file, group, channel});
        }
    });
}

template <class Call>
void append_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "a", &file.handle); });
    for_each_channel(file.handle, call, [&]<class Element>(Element, const owners& all) {
        stage_samples<Element>(all[2], call);
    });
    call([&] { return save_file(file.handle); });
    call([&] { return close_file(&file.handle); });
}

// Reads all properties and the values of `saves` saves.
template <class Call>
void read_everything(const char* path, std::size_t saves, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "r", &file.handle); });
    for_each_channel(file.handle, call, [&]<class Element>(Element, const owners& all) {
        using T = typename Element::value;
        for (std::size_t i = 0; i != all.size(); ++i) {
            T value{};
            call([&] { return Element::properties[i].get(all[i], Element::name, &value); });
            call([&] { return !is_same(Element::samples[i], value); });
        }
        std::uint64_t count = 0;
        call([&] { return get_num_channel_data(all[2], &count); });
        call([&] {
            return get_channel_datatype(all[2]) != Element::code || count != staged_values * saves;
        });
        const auto values = std::make_unique<T[]>(count);
        call([&] { return Element::get(all[2], values.get()); });
        for (std::size_t i = 0; i != count; ++i) {
            call([&] { return !is_same(Element::samples[i % 3], values[i]); });
        }
    });
    call([&] { return close_file(&file.handle); });
}
