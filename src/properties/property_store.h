#pragma once

#include <utility>

#include "core/handles.h"
#include "core/text.h"

namespace tdms {

/// Adds a property to the file, group or channel of a handle. The first of two properties of one
/// name stays as it is.
template <class Object>
int create_property(Object* handle, std::string_view name, std::uint32_t type, byte_vector value)
{
    return with_object<Object>(handle, [&](Object& owner) -> int {
        if (owner.properties.contains(name)) return level<Object>::property_repeated;
        owner.properties.emplace(name,
                                 std::make_shared<property>(property{type, std::move(value)}));
        return TDMS_OK;
    });
}

/// Hands a property to `use`, whose result is returned.
template <class Object, class Use>
int with_property(Object& owner, std::string_view name, Use use)
{
    const auto entry = owner.properties.find(name);
    if (entry == owner.properties.end()) return level<Object>::property_absent;
    return use(*entry->second);
}

}  // namespace tdms
