#pragma once

#include <cstdint>
#include <string>
#include <tdms.hpp>
#include <type_traits>

#include "conversion/hdf5_handle.h"

namespace tool {

/// The unit of times.
inline constexpr const char* unit_of_times = "ns since 1970-01-01T00:00:00Z";

/// Strings in UTF-8 of variable length, which end at the first zero byte.
hdf5_handle hdf5_string_type();

/// The enumeration of FALSE and TRUE that readers recognize as booleans.
hdf5_handle hdf5_bool_type();

/// The type of values in memory.
template <class T>
hdf5_handle hdf5_type_of()
{
    if constexpr (std::is_same_v<T, std::string>) {
        return hdf5_string_type();
    } else if constexpr (std::is_same_v<T, bool>) {
        return hdf5_bool_type();
    } else if constexpr (std::is_same_v<T, float>) {
        return hdf5_handle(H5Tcopy(H5T_NATIVE_FLOAT));
    } else if constexpr (std::is_same_v<T, double>) {
        return hdf5_handle(H5Tcopy(H5T_NATIVE_DOUBLE));
    } else {
        hdf5_handle type(H5Tcopy(std::is_unsigned_v<T> ? H5T_NATIVE_UINT64 : H5T_NATIVE_INT64));
        checked(H5Tset_size(type, sizeof(T)));
        return type;
    }
}

}  // namespace tool
