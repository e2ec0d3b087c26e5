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

// The same life by the second interface: two saves, each with all types in two groups and with
// properties of its own, then one that is appended; every value read back, also through the handle
// that wrote it.
constexpr std::uint64_t values_of_a_save = 2 * staged_values;

template <class Element, class Call>
void append_samples(void* group, bool create, Call call)
{
    typename Element::value values[staged_values];
    for (std::size_t i = 0; i != staged_values; ++i) values[i] = Element::samples[i % 3];
    void* channel = nullptr;
    const auto open = create ? tdms_create_channel : tdms_find_channel;
    call([&] { return open(group, Element::name, &channel); });
    call([&] { return Element::append(channel, staged_values, values); });
    call([&] { return Element::append(channel, staged_values, values); });
}

template <class Call>
void save_everything_once(void* file, bool create, Call call)
{
    for (const char* const name : {"g", "h"}) {
        void* group = nullptr;
        const auto open = create ? tdms_create_group : tdms_find_group;
        call([&] { return open(file, name, &group); });
        for_each_element(
            [&]<class Element>(Element) { append_samples<Element>(group, create, call); });
    }
    call([&] { return tdms_save(file); });
}

template <class Call>
void check_everything(void* file, std::uint64_t saves, Call call)
{
    for (const char* const name : {"g", "h"}) {
        void* group = nullptr;
        call([&] { return tdms_find_group(file, name, &group); });
        for_each_element([&]<class Element>(Element) {
            void* channel = nullptr;
            typename Element::value values[values_of_a_save];
            std::uint64_t count = 0;
            call([&] { return tdms_find_channel(group, Element::name, &channel); });
            call([&] { return tdms_get_num_values(channel, &count, nullptr); });
            call([&] { return count != saves * values_of_a_save; });
            call([&] { return Element::read(channel, count - 30, 30, values); });
            for (std::size_t i = 0; i != 30; ++i) {
                call([&] { return !is_same(Element::samples[(count + i) % 3], values[i]); });
            }
        });
    }
}

template <class Call>
void record_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return tdms_open(path, "w", &file.handle); });
    call([&] { return tdms_create_file_property_nanoseconds(file.handle, "start", 1); });
    save_everything_once(file.handle, true, call);
    save_everything_once(file.handle, false, call);
    check_everything(file.handle, 2, call);
    call([&] { return tdms_close(&file.handle); });
}

template <class Call>
void extend_everything(const char* path, Call call)
{
    file_handle file;
    file_handle viewer;
    call([&] { return tdms_open_partial(path, &viewer.handle, nullptr); });
    call([&] { return tdms_open(path, "a", &file.handle); });
    check_everything(viewer.handle, 2, call);
    save_everything_once(file.handle, false, call);
    call([&] { return tdms_close(&file.handle); });
    call([&] { return tdms_refresh(viewer.handle, nullptr); });
    check_everything(viewer.handle, 3, call);
    call([&] { return tdms_close(&viewer.handle); });
}
