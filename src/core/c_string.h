#pragma once

#include <stdexcept>
#include <string_view>

namespace tdms_impl {

/// The characters of a caller's name, path, mode or string. The message for a null one is fixed
/// here, since the C++ library's own differs between versions.
inline std::string_view not_null(const char* chars)
{
    if (chars == nullptr) throw std::logic_error("basic_string::_M_construct null not valid");
    return chars;
}

}  // namespace tdms_impl
