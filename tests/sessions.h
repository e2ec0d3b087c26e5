#pragma once

#include <memory>
#include <vector>

#include "elements.h"

// A program's life with a file that holds everything there is. Every call into the library goes
// through `call(function)`, which makes of it what its test is about and returns a status.

// An element type that is not the given one.
template <class Element>
using other_than =
    std::conditional_t<Element::code == element_int8::code, element_int16, element_int8>;

// The status of a check: 0, or 1 for what should not be.
template <class T>
int expect(const T& expected, const T& got)
{
    return is_same(expected, got) ? 0 : 1;
}

// Closes the file also when a call gives up by an exception.
struct file_handle {
    file_handle() = default;
    ~file_handle()
    {
        if (handle != nullptr) close_file(&handle);
    }
    file_handle(const file_handle&) = delete;
    file_handle& operator=(const file_handle&) = delete;

    void* handle = nullptr;
};

template <class Element, class Call>
void stage_samples(void* channel, Call call)
{
    using other = other_than<Element>;
    call([&] { return Element::set(channel, std::size(Element::samples), Element::samples); });
    call([&] { return expect(int{TDMS_CHANNEL_DATATYPE}, other::set(channel, 0, nullptr)); });
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
        void* channel = nullptr;
        call([&] { return create_channel(group, Element::name, &channel); });
        void* const owners[] = {file.handle, group, channel};
        for (std::size_t i = 0; i != std::size(owners); ++i) {
            call([&] {
                return Element::properties[i].create(owners[i], Element::name, Element::samples[i]);
            });
        }
        stage_samples<Element>(channel, call);
    });
    call([&] { return save_file(file.handle); });
    call([&] { return get_num_file_property(file.handle) + get_num_group_property(group); });
    call([&] { return create_file_property_string(file.handle, "new", "later"); });
    call([&] { return save_file(file.handle); });
    call([&] { return close_file(&file.handle); });
}

// Calls use(Element, channel) for every channel of a file with everything.
template <class Call, class Use>
void for_each_channel(void* file, Call call, Use use)
{
    void* group = nullptr;
    call([&] { return get_group(file, &group); });
    std::vector<void*> channels(13);
    call([&] { return get_channel(group, channels.data()); });
    for_each_element([&]<class Element>(Element element) {
        for (void* const channel : channels) {
            char name[16];
            call([&] { return get_channel_name(channel, name); });
            if (name == std::string_view(Element::name)) use(element, group, channel);
        }
    });
}

template <class Call>
void append_everything(const char* path, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "a", &file.handle); });
    for_each_channel(file.handle, call, [&]<class Element>(Element, void*, void* channel) {
        stage_samples<Element>(channel, call);
    });
    call([&] { return save_file(file.handle); });
    call([&] { return close_file(&file.handle); });
}

// Reads all properties and the values of `saves` saves. What is not as it was written is a call
// that does not give 0.
template <class Call>
void read_everything(const char* path, std::size_t saves, Call call)
{
    file_handle file;
    call([&] { return open_file(path, "r", &file.handle); });
    for_each_channel(file.handle, call, [&]<class Element>(Element, void* group, void* channel) {
        using T = typename Element::value;
        void* const owners[] = {file.handle, group, channel};
        for (std::size_t i = 0; i != std::size(owners); ++i) {
            T value{};
            call([&] { return Element::properties[i].get(owners[i], Element::name, &value); });
            call([&] { return expect(Element::samples[i], value); });
        }
        std::uint64_t count = 0;
        call([&] { return get_num_channel_data(channel, &count); });
        call([&] {
            return count == saves * 3 && get_channel_datatype(channel) == Element::code ? 0 : 1;
        });
        const auto values = std::make_unique<T[]>(count);
        call([&] { return Element::get(channel, values.get()); });
        for (std::size_t i = 0; i != count; ++i) {
            call([&] { return is_same(Element::samples[i % 3], values[i]) ? 0 : 1; });
        }
    });
    call([&] { return close_file(&file.handle); });
}
