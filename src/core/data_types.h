#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>

#include "tdms.h"

// The element types: suffix of the exported names, C++ type, type code. All but strings have a
// fixed size in a file.
#define TDMS_FIXED_SIZE_ELEMENTS(X)            \
    X(int8, std::int8_t, TDMS_TYPE_INT8)       \
    X(int16, std::int16_t, TDMS_TYPE_INT16)    \
    X(int32, std::int32_t, TDMS_TYPE_INT32)    \
    X(int64, std::int64_t, TDMS_TYPE_INT64)    \
    X(uint8, std::uint8_t, TDMS_TYPE_UINT8)    \
    X(uint16, std::uint16_t, TDMS_TYPE_UINT16) \
    X(uint32, std::uint32_t, TDMS_TYPE_UINT32) \
    X(uint64, std::uint64_t, TDMS_TYPE_UINT64) \
    X(float, float, TDMS_TYPE_FLOAT)           \
    X(double, double, TDMS_TYPE_DOUBLE)        \
    X(bool, bool, TDMS_TYPE_BOOL)              \
    X(timestamp, timestamp_fields, TDMS_TYPE_TIMESTAMP)

#define TDMS_ELEMENTS(X)        \
    TDMS_FIXED_SIZE_ELEMENTS(X) \
    X(string, tdms_impl::c_string, TDMS_TYPE_STRING)

namespace tdms_impl {

/// A string as C programs pass it.
using c_string = const char*;

/// The data types a file may name, with the size of one element in bytes. A size of 0 marks a type
/// that is known but has no fixed size, or is not supported.
class data_size_table {
  public:
    /// Deliberate: an unknown type is an exception, not a status; it leaves the exported function.
    constexpr std::uint32_t at(std::uint32_t code) const
    {
        const auto* const known = find(code);
        if (known == entries_.end()) throw std::out_of_range("map::at");
        return known->size;
    }

    /// The same, but an unknown type has 0.
    constexpr std::uint32_t size_or_zero(std::uint32_t code) const
    {
        const auto* const known = find(code);
        return known == entries_.end() ? 0 : known->size;
    }

  private:
    struct entry {
        std::uint32_t code;
        std::uint32_t size;
    };

    // The end if the code is unknown.
    constexpr const entry* find(std::uint32_t code) const
    {
        const auto* const found =
            std::lower_bound(entries_.begin(), entries_.end(), code,
                             [](const entry& e, std::uint32_t c) { return e.code < c; });
        return found == entries_.end() || found->code != code ? entries_.end() : found;
    }

    // Sorted by code.
    std::array<entry, 22> entries_{{
        {0x00, 0},  // void
        {TDMS_TYPE_INT8, 1},
        {TDMS_TYPE_INT16, 2},
        {TDMS_TYPE_INT32, 4},
        {TDMS_TYPE_INT64, 8},
        {TDMS_TYPE_UINT8, 1},
        {TDMS_TYPE_UINT16, 2},
        {TDMS_TYPE_UINT32, 4},
        {TDMS_TYPE_UINT64, 8},
        {TDMS_TYPE_FLOAT, 4},
        {TDMS_TYPE_DOUBLE, 8},
        {0x0B, 0},  // extended precision
        {0x0C, 0},
        {0x0D, 0},
        {0x19, 0},  // single precision with unit
        {TDMS_TYPE_STRING, 0},
        {TDMS_TYPE_BOOL, 1},
        {0x40, 0},
        {TDMS_TYPE_TIMESTAMP, 16},
        {0x8000C, 0},     // complex single
        {0x10000D, 0},    // complex double
        {0xFFFFFFFF, 0},  // raw data of data acquisition hardware
    }};
};

inline constexpr data_size_table DataSize;

template <class T>
inline constexpr std::uint32_t type_code = 0;
#define TDMS_TYPE_CODE(suffix, type, code) \
    template <>                            \
    inline constexpr std::uint32_t type_code<type> = code;
TDMS_ELEMENTS(TDMS_TYPE_CODE)
#undef TDMS_TYPE_CODE

/// Bytes of one value of T in a file; 0 for strings.
template <class T>
inline constexpr std::uint32_t stored_size = DataSize.at(type_code<T>);

/// Names the element type whose C++ type is T.
template <class T>
struct element_tag {
    using type = T;
};

/// Calls `use(element_tag<T>{})` for the element type with that code.
/// @return its result; a zero if no element type has that code
template <class Use>
auto with_element_type(std::uint32_t code, Use use)
{
    switch (code) {
#define TDMS_CASE(suffix, type, code) \
    case code:                        \
        return use(element_tag<type>{});
        TDMS_ELEMENTS(TDMS_CASE)
#undef TDMS_CASE
        default:
            return decltype(use(element_tag<double>{})){};
    }
}

}  // namespace tdms_impl
