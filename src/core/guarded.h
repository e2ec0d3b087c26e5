#pragma once

#include <cstring>
#include <exception>
#include <stdexcept>

#include "core/object_lookup.h"

namespace tdms_impl {

/// Runs the work of a tdms_ function and turns exceptions into statuses. The library's own code
/// throws for unknown data types, and for a lack of memory or another resource.
template <class Work>
int guarded(Work work)
{
    try {
        return work();
    } catch (const std::out_of_range&) {
        return TDMS_DATATYPE;
    } catch (const std::exception&) {
        return TDMS_MEMORY;
    }
}

/// The object of a handle; null for a null handle or one of another kind.
template <class Object>
Object* object_of(void* handle)
{
    if (handle == nullptr) return nullptr;
    handle_tag tag{};
    std::memcpy(&tag, handle, sizeof tag);
    return tag == level<Object>::tag ? static_cast<Object*>(handle) : nullptr;
}

/// Passes the object of a handle to `use` and returns its result, without exceptions. The cost does
/// not depend on names or on the number of objects.
template <class Object, class Use>
int guarded(void* handle, Use use)
{
    auto* const object = object_of<Object>(handle);
    if (object == nullptr) return TDMS_ARGUMENT;
    return guarded([&]() -> int { return use(*object); });
}

/// Whether the object's file can be written to.
template <class Object>
bool takes_changes(Object& object)
{
    const option& file = *file_of(&object);
    return file.writable && file.stream != nullptr;
}

/// The same for functions that change a file; one that cannot be written to is TDMS_FILE_HANDLE.
template <class Object, class Use>
int guarded_change(void* handle, Use use)
{
    return guarded<Object>(handle, [&](Object& object) -> int {
        return takes_changes(object) ? use(object) : static_cast<int>(TDMS_FILE_HANDLE);
    });
}

}  // namespace tdms_impl
