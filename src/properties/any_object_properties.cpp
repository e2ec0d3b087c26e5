// The tdms_ functions for properties of any type, of files, groups and channels alike.

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "codec/element.h"
#include "codec/nanoseconds.h"
#include "codec/string_codec.h"
#include "core/guarded.h"
#include "properties/property_store.h"

namespace tdms_impl {
namespace {

// Lengths of names, and of strings including their prefix, are 32-bit numbers.
constexpr std::uint64_t most_name = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t most_string = most_name - string_prefix_size;

// The member of tdms_value that holds values of T.
template <class T, class Value>
auto& member(Value& v)
{
    if constexpr (std::is_same_v<T, bool>) {
        return v.value.boolean;
    } else if constexpr (std::is_same_v<T, timestamp_fields>) {
        return v.value.nanoseconds;
    } else if constexpr (std::is_floating_point_v<T>) {
        return v.value.number;
    } else if constexpr (std::is_signed_v<T>) {
        return v.value.integer;
    } else {
        return v.value.natural;
    }
}

template <class T>
bool fits(const tdms_value& v)
{
    if constexpr (std::is_same_v<T, bool>) {
        unsigned char byte = 0;  // any other is no bool, and must not be read as one
        std::memcpy(&byte, &v.value, 1);
        return byte <= 1;
    }
    const auto value = member<T>(v);
    if constexpr (std::is_same_v<T, float>) {
        return !std::isfinite(value) || std::abs(value) <= std::numeric_limits<float>::max();
    } else if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(value) == value;
    } else {
        return true;
    }
}

// The bytes of a value. @return whether it fits its type
template <class T>
bool encode(const tdms_value& v, byte_string& bytes)
{
    if (!fits<T>(v)) return false;
    bytes.resize(stored_size<T>);
    if constexpr (std::is_same_v<T, timestamp_fields>) {
        encode_nanoseconds(&v.value.nanoseconds, 1, bytes.data());
    } else {
        store_element(bytes.data(), static_cast<T>(member<T>(v)));
    }
    return true;
}

template <>
bool encode<c_string>(const tdms_value& v, byte_string& bytes)
{
    const auto [string, length] = v.value.string;
    if ((string == nullptr && length != 0) || length > most_string) return false;
    bytes = encode_string({string, length});
    return true;
}

// @return whether there are enough bytes
template <class T>
bool decode(const byte_string& bytes, tdms_value& v)
{
    if (bytes.size() < stored_size<T>) return false;
    if constexpr (std::is_same_v<T, timestamp_fields>) {
        decode_nanoseconds(bytes.data(), 1, &v.value.nanoseconds);
    } else {
        member<T>(v) = {load_element<T>(bytes.data())};
    }
    return true;
}

template <>
bool decode<c_string>(const byte_string& bytes, tdms_value& v)
{
    if (bytes.size() < string_prefix_size) return false;
    const std::string_view string = after_prefix(bytes);
    v.value.string.text = string.data();
    v.value.string.length = string.size();
    return true;
}

tdms_value value_of(const property& found)
{
    tdms_value v{};
    const bool decoded = with_element_type(
        found.data_type, [&]<class T>(element_tag<T>) { return decode<T>(found.data, v); });
    if (decoded) v.type = static_cast<std::int32_t>(found.data_type);
    return v;
}

int next_property(const property_map& properties, const char** name, std::uint64_t* length,
                  tdms_value* value)
{
    const auto next = *name == nullptr ? properties.begin()
                                       : properties.upper_bound(std::string_view(*name, *length));
    if (next == properties.end()) {
        *name = nullptr;
        *length = 0;
        return TDMS_OK;
    }
    *name = next->first.c_str();
    *length = next->first.size();
    *value = value_of(*next->second);
    return TDMS_OK;
}

int set_property(property_map& properties, std::string_view name, const tdms_value& value)
{
    byte_string bytes;
    const bool encoded =
        with_element_type(static_cast<std::uint32_t>(value.type),
                          [&]<class T>(element_tag<T>) { return encode<T>(value, bytes); });
    if (!encoded) return TDMS_ARGUMENT;
    auto created = std::make_shared<property>(
        property{static_cast<std::uint32_t>(value.type), std::move(bytes)});
    const auto [entry, added] = properties.try_emplace(std::string(name));
    entry->second = std::move(created);
    return TDMS_OK;
}

// Passes the object of a handle of any of the three kinds to `use`.
template <class Use>
int guarded_any(void* handle, Use use)
{
    if (object_of<option>(handle) != nullptr) return guarded<option>(handle, use);
    if (object_of<group>(handle) != nullptr) return guarded<group>(handle, use);
    return guarded<channel>(handle, use);
}

}  // namespace
}  // namespace tdms_impl

int tdms_next_property(void* object, const char** name, uint64_t* length, tdms_value* value)
{
    return tdms_impl::guarded_any(object, [=](auto& owner) -> int {
        if (name == nullptr || length == nullptr || value == nullptr) return TDMS_ARGUMENT;
        if (*name != nullptr && *length > tdms_impl::most_name) return TDMS_ARGUMENT;
        return tdms_impl::next_property(owner.properties, name, length, value);
    });
}

int tdms_get_property(void* object, const char* name, uint64_t length, tdms_value* value)
{
    return tdms_impl::guarded_any(object, [=](auto& owner) -> int {
        if (name == nullptr || value == nullptr || length > tdms_impl::most_name) {
            return TDMS_ARGUMENT;
        }
        return tdms_impl::with_property(owner, {name, length},
                                        [=](const tdms_impl::property& found) -> int {
                                            *value = tdms_impl::value_of(found);
                                            return TDMS_OK;
                                        });
    });
}

int tdms_set_property(void* object, const char* name, uint64_t length, const tdms_value* value)
{
    return tdms_impl::guarded_any(object, [=](auto& owner) -> int {
        if (name == nullptr || value == nullptr || length > tdms_impl::most_name) {
            return TDMS_ARGUMENT;
        }
        if (!tdms_impl::takes_changes(owner)) return TDMS_FILE_HANDLE;
        return tdms_impl::set_property(owner.properties, {name, length}, *value);
    });
}
