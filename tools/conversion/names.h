#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// Returns a name for each of `wanted`, all of them allowed and different. The first occurrence of
/// an allowed name stays as it is; any other name is made allowed, and gets a number if it is
/// taken.
/// @param allowed makes a name allowed, or returns it if it is
std::vector<std::string> distinct_names(const std::vector<std::string>& wanted,
                                        const std::function<std::string(std::string)>& allowed);

}  // namespace tool
