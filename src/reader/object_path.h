#pragma once

#include <string_view>

#include "codec/layout.h"

namespace tdms_impl {

enum class object_kind { invalid, file, group, channel };

/// What an object's path says.
struct object_path_parts {
    object_kind kind;
    std::string_view group_path;  // of a group its own
    std::string_view name;
};

/// REQUIRES: a group's path of at least three characters.
inline std::string_view group_name(std::string_view path)
{
    return path.substr(2, path.size() - 3);
}

/// Whether the last name of a path, below `parent`, has the quotes that it should have.
/// REQUIRES: a path that parse_object_path() takes for a group's or a channel's.
inline bool is_quoted(std::string_view path, std::string_view parent)
{
    return path.substr(parent.size(), 2) == "/'" && path.back() == '\'';
}

/// The slashes of a path tell what it names: "/" alone the file, one slash a group, any more a
/// channel, whose group's path ends before the second slash. Without a slash in front, that would
/// be the path of no group. A name is what is left without a slash and a quote in front and a quote
/// behind, whatever stands in their places.
inline object_path_parts parse_object_path(std::string_view path)
{
    constexpr object_path_parts invalid{object_kind::invalid, {}, {}};
    if (path == root_path) return {object_kind::file, {}, {}};
    const std::size_t first = path.find('/');
    if (path.size() < 3 || first == std::string_view::npos) return invalid;
    const std::size_t second = path.find('/', first + 1);
    if (second == std::string_view::npos) {
        return {object_kind::group, path, group_name(path)};
    }
    if (first != 0 || second < 3 || path.size() < second + 3) return invalid;
    return {object_kind::channel, path.substr(0, second),
            path.substr(second + 2, path.size() - second - 3)};
}

}  // namespace tdms_impl
