#include "properties/property_store.h"

#include "core/c_string.h"

namespace tdms_impl {
namespace {

template <class Object>
int count_properties(void* handle)
{
    return with_object<Object>(handle, [](Object& owner) { return count_of(owner.properties); });
}

template <class Object>
int list_properties(void* handle, const char** names)
{
    return with_object<Object>(handle, [names](Object& owner) mutable -> int {
        if (owner.properties.empty()) return TDMS_OK;
        if (names == nullptr) return level<Object>::property_absent;
        for (const auto& entry : owner.properties) *names++ = entry.first.c_str();
        return TDMS_OK;
    });
}

template <class Object>
int property_datatype(void* handle, const char* name)
{
    return with_object<Object>(handle, [name](Object& owner) {
        return with_property(owner, not_null(name),
                             [](property& found) { return static_cast<int>(found.data_type); });
    });
}

template <class Object>
int delete_property(void* handle, const char* name)
{
    return with_object<Object>(handle, [name](Object& owner) -> int {
        const auto entry = owner.properties.find(not_null(name));
        if (entry == owner.properties.end()) return level<Object>::property_absent;
        owner.properties.erase(entry);
        return TDMS_OK;
    });
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_STORE(level, object)                                \
    int get_num_##level##_property(void* handle)                        \
    {                                                                   \
        return tdms_impl::count_properties<object>(handle);             \
    }                                                                   \
    int get_##level##_property(void* handle, const char** names)        \
    {                                                                   \
        return tdms_impl::list_properties<object>(handle, names);       \
    }                                                                   \
    int get_##level##_property_datatype(void* handle, const char* name) \
    {                                                                   \
        return tdms_impl::property_datatype<object>(handle, name);      \
    }                                                                   \
    int delete_##level##_property(void* handle, const char* name)       \
    {                                                                   \
        return tdms_impl::delete_property<object>(handle, name);        \
    }
TDMS_DEFINE_STORE(file, tdms_impl::option)
TDMS_DEFINE_STORE(group, tdms_impl::group)
TDMS_DEFINE_STORE(channel, tdms_impl::channel)
