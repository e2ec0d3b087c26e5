#include "codec/nanoseconds.h"
#include "codec/string_codec.h"
#include "codec/timestamp_codec.h"
#include "core/guarded.h"
#include "properties/property_store.h"

namespace tdms_impl {
namespace {

// Passes the bytes of a property of that type to `use`.
template <class Object, class Use>
int view_property(void* handle, const char* name, bool outputs, std::uint32_t type,
                  std::size_t least, Use use)
{
    return guarded<Object>(handle, [&](Object& owner) -> int {
        if (name == nullptr || !outputs) return TDMS_ARGUMENT;
        return with_property(owner, name, [&](const property& found) -> int {
            if (found.data_type != type || found.data.size() < least) return TDMS_DATATYPE;
            use(found.data);
            return TDMS_OK;
        });
    });
}

template <class Object>
int get_string(void* handle, const char* name, const char** value, std::uint64_t* length)
{
    const bool outputs = value != nullptr && length != nullptr;
    return view_property<Object>(handle, name, outputs, TDMS_TYPE_STRING, string_prefix_size,
                                 [=](const byte_string& bytes) {
                                     *value = after_prefix(bytes).data();
                                     *length = after_prefix(bytes).size();
                                 });
}

template <class Object>
int get_nanoseconds(void* handle, const char* name, std::int64_t* value)
{
    return view_property<Object>(
        handle, name, value != nullptr, TDMS_TYPE_TIMESTAMP, timestamp_size,
        [=](const byte_string& bytes) { decode_nanoseconds(bytes.data(), 1, value); });
}

template <class Object>
int create_nanoseconds(void* handle, const char* name, std::int64_t value)
{
    return guarded_change<Object>(handle, [=](Object& owner) -> int {
        if (name == nullptr) return TDMS_ARGUMENT;
        byte_string bytes(timestamp_size, 0);
        encode_nanoseconds(&value, 1, bytes.data());
        return add_property(owner, name, TDMS_TYPE_TIMESTAMP, std::move(bytes));
    });
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_VIEWS(level, object)                                                          \
    int tdms_get_##level##_property_string(void* handle, const char* name, const char** value,    \
                                           uint64_t* length)                                      \
    {                                                                                             \
        return tdms_impl::get_string<object>(handle, name, value, length);                        \
    }                                                                                             \
    int tdms_get_##level##_property_nanoseconds(void* handle, const char* name, int64_t* value)   \
    {                                                                                             \
        return tdms_impl::get_nanoseconds<object>(handle, name, value);                           \
    }                                                                                             \
    int tdms_create_##level##_property_nanoseconds(void* handle, const char* name, int64_t value) \
    {                                                                                             \
        return tdms_impl::create_nanoseconds<object>(handle, name, value);                        \
    }
TDMS_DEFINE_VIEWS(file, tdms_impl::option)
TDMS_DEFINE_VIEWS(group, tdms_impl::group)
TDMS_DEFINE_VIEWS(channel, tdms_impl::channel)
