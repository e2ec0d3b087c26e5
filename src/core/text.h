#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tdms_impl {

/// The text of a caller's name, path or mode. The message for a null one is fixed here, since the
/// C++ library's own differs between versions.
inline std::string_view text(const char* chars)
{
    if (chars == nullptr) throw std::logic_error("basic_string::_M_construct null not valid");
    return chars;
}

/// The path of an object called `name` below `parent`; a group's parent path is empty. Names are
/// taken as they are, quotes and slashes included.
inline std::string object_path(std::string_view parent, std::string_view name)
{
    std::string path;
    path.reserve(parent.size() + name.size() + 3);
    path.append(parent).append("/'").append(name).append("'");
    return path;
}

}  // namespace tdms_impl
