#pragma once

#include <utility>

#include "core/object_lookup.h"

namespace tdms_impl {

/// Adds a property to an object. A name that exists is rejected, unless tdms_save() has written its
/// property: after a save, the new one replaces it.
template <class Object>
int add_property(Object& owner, std::string_view name, std::uint32_t type, byte_string value)
{
    const auto old = owner.properties.find(name);
    if (old != owner.properties.end() && old->second->origin != property_origin::saved) {
        return level<Object>::property_repeated;
    }
    auto created = std::make_shared<property>(property{type, std::move(value)});
    if (old == owner.properties.end()) {
        owner.properties.emplace(name, std::move(created));
    } else {
        old->second = std::move(created);
    }
    return TDMS_OK;
}

/// Adds a property to the file, group or channel of a handle.
template <class Object>
int create_property(Object* handle, std::string_view name, std::uint32_t type, byte_string value)
{
    return with_object<Object>(
        handle, [&](Object& owner) { return add_property(owner, name, type, std::move(value)); });
}

/// Passes a property to `use` and returns its result.
template <class Object, class Use>
int with_property(Object& owner, std::string_view name, Use use)
{
    const auto entry = owner.properties.find(name);
    if (entry == owner.properties.end()) return level<Object>::property_absent;
    return use(*entry->second);
}

}  // namespace tdms_impl
