#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// Names that are allowed and different from each other, one for each of `wanted`. What is allowed
/// stays as it is; what `allowed` must change, or what is there twice, makes way and gets a number.
/// @param allowed makes a name allowed, and leaves it if it is
std::vector<std::string> distinct_names(const std::vector<std::string>& wanted,
                                        const std::function<std::string(std::string)>& allowed);

}  // namespace tool
