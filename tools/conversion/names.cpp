#include "conversion/names.h"

#include <unordered_map>
#include <unordered_set>

namespace tool {

std::vector<std::string> distinct_names(const std::vector<std::string>& wanted,
                                        const std::function<std::string(std::string)>& allowed)
{
    std::unordered_set<std::string> taken;
    std::vector<std::string> names(wanted.size());
    std::vector<std::size_t> others;
    std::unordered_map<std::string, std::size_t> numbers;  // the last number that each name got
    for (std::size_t i = 0; i != wanted.size(); ++i) {
        if (allowed(wanted[i]) == wanted[i] && taken.insert(wanted[i]).second) {
            names[i] = wanted[i];
        } else {
            others.push_back(i);
        }
    }
    for (const std::size_t i : others) {
        const std::string name = allowed(wanted[i]);
        names[i] = name;
        for (std::size_t& number = numbers.try_emplace(name, 1).first->second;
             !taken.insert(names[i]).second;) {
            names[i] = name + '_';
            names[i] += std::to_string(++number);
        }
    }
    return names;
}

}  // namespace tool
