#include "core/guarded.h"
#include "core/object_path.h"

namespace tdms_impl {
namespace {

// The object of that name; null if there is none. A name is its path without the quotes, so it
// is looked up by path; only a foreign file can hold paths that lack quotes.
template <class Object>
Object* find_named(object_map<Object>& objects, std::string_view parent, bool unquoted,
                   std::string_view name)
{
    Object* const found = objects.find(object_path(parent, name));
    if (found != nullptr || !unquoted) return found;
    for (auto& [path, object] : objects) {
        if (object.name == name) return &object;
    }
    return nullptr;
}

group* find_named(option& file, std::string_view name)
{
    return find_named(file.groups, {}, file.unquoted, name);
}

channel* find_named(group& owner, std::string_view name)
{
    return find_named(owner.channels, owner.path, owner.unquoted, name);
}

// These add an object of any name.
int add_named(option& owner, const char* name, void** added)
{
    return create_group(&owner, name, added);
}

int add_named(group& owner, const char* name, void** added)
{
    return create_channel(&owner, name, added);
}

template <class Owner>
int create_named(void* owner, const char* name, void** created, int repeated)
{
    return guarded_change<Owner>(owner, [=](Owner& found) -> int {
        if (name == nullptr || created == nullptr) return TDMS_ARGUMENT;
        // In a path, slashes separate the names.
        if (std::string_view(name).find('/') != std::string_view::npos) return TDMS_ARGUMENT;
        if (find_named(found, name) != nullptr) return repeated;
        return add_named(found, name, created);
    });
}

template <class Owner>
int find_below(void* owner, const char* name, void** found, int absent)
{
    return guarded<Owner>(owner, [=](Owner& in) -> int {
        if (name == nullptr || found == nullptr) return TDMS_ARGUMENT;
        void* const object = find_named(in, name);
        if (object == nullptr) return absent;
        *found = object;
        return TDMS_OK;
    });
}

template <class Object>
int get_name(void* handle, const char** name, std::uint64_t* length)
{
    return guarded<Object>(handle, [=](const Object& object) -> int {
        if (name == nullptr || length == nullptr) return TDMS_ARGUMENT;
        *name = object.name.c_str();
        *length = object.name.size();
        return TDMS_OK;
    });
}

}  // namespace
}  // namespace tdms_impl

int tdms_create_group(void* file, const char* name, void** group)
{
    return tdms_impl::create_named<tdms_impl::option>(file, name, group, TDMS_GROUP_REPEATED);
}

int tdms_create_channel(void* group, const char* name, void** channel)
{
    return tdms_impl::create_named<tdms_impl::group>(group, name, channel, TDMS_CHANNEL_REPEATED);
}

int tdms_find_group(void* file, const char* name, void** group)
{
    return tdms_impl::find_below<tdms_impl::option>(file, name, group, TDMS_GROUP_HANDLE);
}

int tdms_find_channel(void* group, const char* name, void** channel)
{
    return tdms_impl::find_below<tdms_impl::group>(group, name, channel, TDMS_CHANNEL_HANDLE);
}

int tdms_get_group_name(void* group, const char** name, uint64_t* length)
{
    return tdms_impl::get_name<tdms_impl::group>(group, name, length);
}

int tdms_get_channel_name(void* channel, const char** name, uint64_t* length)
{
    return tdms_impl::get_name<tdms_impl::channel>(channel, name, length);
}
