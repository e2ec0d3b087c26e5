#include "codec/element.h"
#include "codec/string_codec.h"
#include "core/c_string.h"
#include "properties/property_store.h"

namespace tdms_impl {
namespace {

template <class T>
byte_string encoded(const T& value)
{
    byte_string bytes(stored_size<T>, 0);
    store_element(bytes.data(), value);
    return bytes;
}

byte_string encoded(c_string value)
{
    return encode_string(not_null(value));
}

template <class Object, class T>
int create(void* handle, const char* name, const T& value)
{
    auto* const owner = static_cast<Object*>(handle);
    if (file_of(owner) == nullptr) return level<Object>::invalid_handle;
    const std::string_view checked_name = not_null(name);
    return create_property(owner, checked_name, type_code<T>, encoded(value));
}

// The stored bytes of a property; empty with any status but 0.
template <class Object>
int get_bytes(Object* owner, const char* name, byte_string& bytes)
{
    const std::string_view checked_name = not_null(name);
    return with_object<Object>(owner, [&](Object& found) {
        return with_property(found, checked_name, [&bytes](property& stored) {
            bytes = stored.data;
            return TDMS_OK;
        });
    });
}

// Deliberate: the stored type is not compared with the one asked for, and the value is written
// whatever the status, except for a handle without a file: as zero, if there are not enough bytes.
template <class Object, class T>
int get(void* handle, const char* name, T* value)
{
    auto* const owner = static_cast<Object*>(handle);
    if (file_of(owner) == nullptr) return level<Object>::invalid_handle;
    byte_string bytes;
    const int status = get_bytes(owner, name, bytes);
    if (value == nullptr) return TDMS_PROPERTY_BUFFER;
    *value = bytes.size() < stored_size<T> ? T{} : load_element<T>(bytes.data());
    return status;
}

// Deliberate: the buffer must be larger than the stored bytes, length included, although only the
// string and a NUL are written; and this is checked before a missing name is reported.
template <class Object>
int get_string(void* handle, const char* name, char* buffer, std::uint64_t size)
{
    auto* const owner = static_cast<Object*>(handle);
    if (file_of(owner) == nullptr) return level<Object>::invalid_handle;
    byte_string bytes;
    const int status = get_bytes(owner, name, bytes);
    if (size <= bytes.size()) return TDMS_PROPERTY_BUFFER;
    if (status != TDMS_OK) return status;
    if (buffer == nullptr) return TDMS_PROPERTY_BUFFER;
    const std::string_view stored = stored_string(bytes);
    buffer[stored.copy(buffer, stored.size())] = '\0';
    return TDMS_OK;
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_CREATE(level, object, suffix, type)                                \
    int create_##level##_property_##suffix(void* handle, const char* name, type value) \
    {                                                                                  \
        return tdms_impl::create<object>(handle, name, value);                         \
    }
#define TDMS_DEFINE_GET(level, object, suffix, type)                                 \
    int get_##level##_property_##suffix(void* handle, const char* name, type* value) \
    {                                                                                \
        return tdms_impl::get<object>(handle, name, value);                          \
    }
#define TDMS_DEFINE_GET_STRING(level, object)                                                      \
    int get_##level##_property_string(void* handle, const char* name, char* buffer, uint64_t size) \
    {                                                                                              \
        return tdms_impl::get_string<object>(handle, name, buffer, size);                          \
    }
#define TDMS_DEFINE_CREATES(suffix, type, code)               \
    TDMS_DEFINE_CREATE(file, tdms_impl::option, suffix, type) \
    TDMS_DEFINE_CREATE(group, tdms_impl::group, suffix, type) \
    TDMS_DEFINE_CREATE(channel, tdms_impl::channel, suffix, type)
#define TDMS_DEFINE_GETS(suffix, type, code)               \
    TDMS_DEFINE_GET(file, tdms_impl::option, suffix, type) \
    TDMS_DEFINE_GET(group, tdms_impl::group, suffix, type) \
    TDMS_DEFINE_GET(channel, tdms_impl::channel, suffix, type)

TDMS_ELEMENTS(TDMS_DEFINE_CREATES)
TDMS_FIXED_SIZE_ELEMENTS(TDMS_DEFINE_GETS)
TDMS_DEFINE_GET_STRING(file, tdms_impl::option)
TDMS_DEFINE_GET_STRING(group, tdms_impl::group)
TDMS_DEFINE_GET_STRING(channel, tdms_impl::channel)
