#pragma once

#include <vector>

#include "tdms.h"

// A handle of a file that is closed also when an exception passes by.
struct file_handle {
    file_handle() = default;
    ~file_handle()
    {
        if (handle != nullptr) close_file(&handle);
    }
    file_handle(file_handle&&) = delete;

    void* handle = nullptr;
};

// The groups of a file, or the channels of a group.
inline std::vector<void*> groups_or_channels(void* owner, int (*count)(void*),
                                             int (*list)(void*, void**))
{
    std::vector<void*> handles(static_cast<std::size_t>(count(owner)));
    list(owner, handles.data());
    return handles;
}
inline std::vector<void*> groups_of(void* file)
{
    return groups_or_channels(file, get_num_group, get_group);
}
inline std::vector<void*> channels_of(void* group)
{
    return groups_or_channels(group, get_num_channel, get_channel);
}
