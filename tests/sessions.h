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

constexpr std::size_t staged_values = 24;

template <class Element>
auto samples()
{
    std::array<typename Element::value, staged_values> values;
    for (std::size_t i = 0; i != staged_values; ++i) values[i] = Element::samples[i % 3];
    return values;
}

// Values from the first of a file on, or from any other that is alike.
template <class Element, class Values, class Call>
void check_samples(const Values& values, Call call)
{
    std::size_t i = 0;
    for (const auto& value : values) {
        const auto& expected = Element::samples[i++ % 3];
        call([&] { return !is_same(expected, value); });
    }
}

template <class Element, class Call>
owners find(void* file, const char* group, Call call)
{
    owners all = {file, nullptr, nullptr};
    call([&] { return tdms_find_group(file, group, &all[1]); });
    call([&] { return tdms_find_channel(all[1], Element::name, &all[2]); });
    return all;
}

template <class Element, class Call>
void stage_samples(void* channel, Call call)
{
    using other = std::conditional_t<Element::code == 1, element_int16, element_int8>;
    call([&] { return Element::set(channel, staged_values, samples<Element>().data()); });
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

template <class Call>
void append_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "a", &file.handle); });
    for_each_element([&]<class Element>(Element) {
        stage_samples<Element>(find<Element>(file.handle, "g", call)[2], call);
    });
    call([&] { return save_file(file.handle); });
    call([&] { return close_file(&file.handle); });
}

// Reads all properties and the values of three saves.
template <class Call>
void read_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "r", &file.handle); });
    for_each_element([&]<class Element>(Element) {
        const owners all = find<Element>(file.handle, "g", call);
        for (std::size_t i = 0; i != all.size(); ++i) {
            typename Element::value value{};
            call([&] { return Element::properties[i].get(all[i], Element::name, &value); });
            call([&] { return !is_same(Element::samples[i], value); });
        }
        std::uint64_t count = 0;
        typename Element::value values[3 * staged_values] = {};
        call([&] { return get_channel_datatype(all[2]) != Element::code; });
        call([&] { return get_num_channel_data(all[2], &count); });
        call([&] { return count != std::size(values); });
        call([&] { return Element::get(all[2], values); });
        check_samples<Element>(values, call);
    });
    call([&] { return close_file(&file.handle); });
}

// The same life by the second interface: two saves, each with all types in two groups and with
// properties of its own, then one that is appended; every value read back, also through the handle
// that wrote it.
template <class Call>
void save_everything(void* file, bool create, Call call)
{
    const auto open_group = create ? tdms_create_group : tdms_find_group;
    const auto open_channel = create ? tdms_create_channel : tdms_find_channel;
    for (const char* const name : {"g", "h"}) {
        void* group = nullptr;
        void* channel = nullptr;
        call([&] { return open_group(file, name, &group); });
        for_each_element([&]<class Element>(Element) {
            call([&] { return open_channel(group, Element::name, &channel); });
            for (int i = 0; i != 2; ++i) {
                const auto values = samples<Element>();
                call([&] { return Element::append(channel, staged_values, values.data()); });
            }
        });
    }
    call([&] { return tdms_save(file); });
}

template <class Call>
void check_everything(void* file, std::uint64_t saves, Call call)
{
    for (const char* const name : {"g", "h"}) {
        for_each_element([&]<class Element>(Element) {
            void* const channel = find<Element>(file, name, call)[2];
            typename Element::value values[30] = {};
            std::uint64_t count = 0;
            call([&] { return tdms_get_num_values(channel, &count, nullptr); });
            call([&] { return count != saves * 2 * staged_values; });
            call([&] { return Element::read(channel, count - 30, 30, values); });
            check_samples<Element>(values, call);
        });
    }
}

template <class Call>
void record_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return tdms_open(path, "w", &file.handle); });
    call([&] { return tdms_create_file_property_nanoseconds(file.handle, "start", 1); });
    tdms_value note{TDMS_TYPE_STRING, {}};
    note.value.string = {"more than a string object holds itself", 38};
    for (const char* const name : {"a note with a name as long as that", "start"}) {
        call([&] { return tdms_set_property(file.handle, name, strlen(name), &note); });
    }
    save_everything(file.handle, true, call);
    save_everything(file.handle, false, call);
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
    save_everything(file.handle, false, call);
    call([&] { return tdms_close(&file.handle); });
    call([&] { return tdms_refresh(viewer.handle, nullptr); });
    check_everything(viewer.handle, 3, call);
    call([&] { return tdms_close(&viewer.handle); });
}
