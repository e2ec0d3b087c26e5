#include <algorithm>

#include "core/c_string.h"
#include "core/object_lookup.h"
#include "core/object_path.h"

using tdms_impl::channel;
using tdms_impl::group;
using tdms_impl::option;

namespace tdms_impl {
namespace {

// Whether a channel of the group is called `name`. A name is its path without the quotes, so it
// is looked up by path; only a foreign file can hold paths that lack quotes.
bool has_channel_named(const group& owner, std::string_view name)
{
    if (!owner.unquoted) return owner.channels.contains(object_path(owner.path, name));
    return std::any_of(owner.channels.begin(), owner.channels.end(),
                       [name](const auto& entry) { return entry.second.name == name; });
}

}  // namespace

int option::create_channel(const void* group_handle, std::string_view name, void** handle)
{
    const auto& owner_handle = *static_cast<const tdms_impl::group*>(group_handle);
    tdms_impl::group* owner = nullptr;
    if (const int status = find_object(*this, owner_handle, owner)) return status;
    const std::string path = object_path(owner->path, name);
    // Deliberate: names are compared with the new path, so an ordinary repeated name passes and
    // replaces the old channel.
    if (has_channel_named(owner_handle, path)) return TDMS_CHANNEL_REPEATED;
    if (handle == nullptr) return TDMS_CHANNEL_HANDLE;
    std::string own_name(name);
    if (channel* const old = owner->channels.find(path)) {
        // Replaced in place: after erasing it, adding another could run out of memory.
        const std::string_view own_path = old->path;
        *old = channel{};
        *handle = &become_channel(*old, *owner, own_path, std::move(own_name));
        objects_removed = true;
    } else {
        *handle = &add_channel(*owner, path, std::move(own_name));
    }
    return TDMS_OK;
}

}  // namespace tdms_impl

int create_channel(void* group_handle, const char* name, void** handle)
{
    option* const file = tdms_impl::file_of(static_cast<group*>(group_handle));
    if (file == nullptr) return TDMS_GROUP_HANDLE;
    return file->create_channel(group_handle, tdms_impl::not_null(name), handle);
}

int get_num_channel(void* handle)
{
    return tdms_impl::with_object<group>(
        handle, [](group& found) { return tdms_impl::count_of(found.channels); });
}

int get_channel(void* handle, void** list)
{
    return tdms_impl::with_object<group>(handle, [list](group& found) {
        return tdms_impl::list_handles(found.channels, list, TDMS_GROUP_HANDLE);
    });
}

int get_channel_name(void* handle, char* name)
{
    return tdms_impl::with_object<channel>(handle, [name](channel& found) {
        return tdms_impl::copy_name(found.name, name, TDMS_CHANNEL_HANDLE);
    });
}

int delete_channel(void* handle)
{
    return tdms_impl::with_object<channel>(handle, [](channel& found) {
        found.group->file->objects_removed = true;
        found.group->channels.erase(found.path);
        return TDMS_OK;
    });
}

int get_channel_datatype(void* handle)
{
    return tdms_impl::with_object<channel>(
        handle, [](channel& found) { return static_cast<int>(found.data_type); });
}

int get_num_channel_data(void* handle, uint64_t* count)
{
    return tdms_impl::with_object<channel>(handle, [count](channel& found) -> int {
        if (count == nullptr) return TDMS_CHANNEL_DATA_COUNT;
        *count = found.value_count;
        return TDMS_OK;
    });
}
