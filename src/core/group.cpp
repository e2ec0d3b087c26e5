#include "core/c_string.h"
#include "core/object_lookup.h"
#include "core/object_path.h"

using tdms_impl::group;
using tdms_impl::option;

int create_group(void* file, const char* name, void** handle)
{
    auto* const owner = static_cast<option*>(file);
    if (owner == nullptr) return TDMS_FILE_HANDLE;
    const std::string_view bare_name = tdms_impl::not_null(name);
    const std::string path = tdms_impl::object_path({}, bare_name);
    if (owner->groups.contains(path)) return TDMS_GROUP_REPEATED;
    if (handle == nullptr) return TDMS_GROUP_HANDLE;
    *handle = &tdms_impl::add_group(*owner, path, std::string(bare_name));
    return TDMS_OK;
}

int get_num_group(void* file)
{
    return tdms_impl::with_object<option>(
        file, [](option& found) { return tdms_impl::count_of(found.groups); });
}

int get_group(void* file, void** list)
{
    return tdms_impl::with_object<option>(file, [list](option& found) {
        return tdms_impl::list_handles(found.groups, list, TDMS_FILE_HANDLE);
    });
}

int get_group_name(void* handle, char* name)
{
    return tdms_impl::with_object<group>(handle, [name](group& found) {
        return tdms_impl::copy_name(found.name, name, TDMS_GROUP_HANDLE);
    });
}

int delete_group(void* handle)
{
    return tdms_impl::with_object<group>(handle, [](group& found) {
        found.file->objects_removed = true;
        found.file->groups.erase(found.path);
        return TDMS_OK;
    });
}
