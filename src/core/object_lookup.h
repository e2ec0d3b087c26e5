#pragma once

#include "core/object_model.h"

namespace tdms_impl {

/// What the three levels of objects differ in.
template <class Object>
struct level;

template <>
struct level<option> {
    static constexpr handle_tag tag = handle_tag::file;
    static constexpr int invalid_handle = TDMS_FILE_HANDLE;
    static constexpr int property_absent = TDMS_FILE_PROPERTY_NAME;
    static constexpr int property_repeated = TDMS_FILE_PROPERTY_REPEATED;
};

template <>
struct level<group> {
    static constexpr handle_tag tag = handle_tag::group;
    static constexpr int invalid_handle = TDMS_GROUP_HANDLE;
    static constexpr int property_absent = TDMS_GROUP_PROPERTY_NAME;
    static constexpr int property_repeated = TDMS_GROUP_PROPERTY_REPEATED;
};

template <>
struct level<channel> {
    static constexpr handle_tag tag = handle_tag::channel;
    static constexpr int invalid_handle = TDMS_CHANNEL_HANDLE;
    static constexpr int property_absent = TDMS_CHANNEL_PROPERTY_NAME;
    static constexpr int property_repeated = TDMS_CHANNEL_PROPERTY_REPEATED;
};

/// The file of a handle's object: null for a null handle and for an object without a file.
inline option* file_of(option* file)
{
    return file;
}
inline option* file_of(const group* handle)
{
    return handle == nullptr ? nullptr : handle->file;
}
inline option* file_of(const channel* handle)
{
    return handle == nullptr ? nullptr : file_of(handle->group);
}

/// Finds the object that is registered under the handle's path. A file handle is trusted.
inline int find_object(option& file, const option&, option*& found)
{
    found = &file;
    return TDMS_OK;
}

inline int find_group(option& file, std::string_view path, group*& found)
{
    found = file.groups.find(path);
    return found == nullptr ? TDMS_GROUP_HANDLE : TDMS_OK;
}

inline int find_object(option& file, const group& handle, group*& found)
{
    return find_group(file, handle.path, found);
}

inline int find_object(option& file, const channel& handle, channel*& found)
{
    group* owner = nullptr;
    if (const int status = find_group(file, handle.group->path, owner)) return status;
    found = owner->channels.find(handle.path);
    return found == nullptr ? TDMS_CHANNEL_HANDLE : TDMS_OK;
}

/// Resolves a handle, passes its registered object to `use`, and returns the result.
template <class Object, class Use>
int with_object(void* handle, Use use)
{
    auto* const object = static_cast<Object*>(handle);
    option* const file = file_of(object);
    if (file == nullptr) return level<Object>::invalid_handle;
    Object* found = nullptr;
    if (const int status = find_object(*file, *object, found)) return status;
    return use(*found);
}

/// The number of entries of a map as a result: its low 32 bits.
template <class Map>
int count_of(const Map& map)
{
    return static_cast<int>(static_cast<std::uint32_t>(map.size()));
}

/// Writes the handle of every object of a map to consecutive slots of `list`.
template <class Object>
int list_handles(object_map<Object>& objects, void** list, int status_if_null)
{
    if (objects.empty()) return TDMS_OK;
    if (list == nullptr) return status_if_null;
    for (auto& [path, object] : objects) *list++ = &object;
    return TDMS_OK;
}

/// Copies a name and a NUL into the caller's buffer.
inline int copy_name(const std::string& name, char* buffer, int status_if_null)
{
    if (buffer == nullptr) return status_if_null;
    buffer[name.copy(buffer, name.size())] = '\0';
    return TDMS_OK;
}

}  // namespace tdms_impl
