#pragma once

#include <string>
#include <string_view>

// A path is "/" for the file, /'group' for a group, /'group'/'channel' for a channel.

namespace tdms_impl {

inline constexpr char root_path[] = "/";

/// The path of an object called `name` below `parent`; a group's parent path is empty. Names are
/// taken as they are, including quotes and slashes.
inline std::string object_path(std::string_view parent, std::string_view name)
{
    std::string path;
    path.reserve(parent.size() + name.size() + 3);
    path.append(parent).append("/'").append(name).append("'");
    return path;
}

enum class object_kind { invalid, file, group, channel };

/// What an object's path states.
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

/// Whether the last name of a path, below `parent`, is in quotes.
/// REQUIRES: a path that parse_object_path() takes for a group's or a channel's.
inline bool is_quoted(std::string_view path, std::string_view parent)
{
    return path.substr(parent.size(), 2) == "/'" && path.back() == '\'';
}

/// The number of slashes gives the kind: "/" alone is the file, one slash makes a group, more make
/// a channel, whose group's path ends before the second slash. A channel's path must begin with a
/// slash; otherwise what precedes the second one would be no group's path. Names are not unescaped:
/// the characters in the positions of slashes and quotes are dropped unchecked.
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
