// A request for a range of values of a channel. It is a line of five fields, separated by tabs:
// FILE, GROUP, CHANNEL, FIRST and COUNT.
#ifndef EXAMPLES_RANGE_REQUEST_HPP
#define EXAMPLES_RANGE_REQUEST_HPP

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "conversions.hpp"

struct range_request {
    std::string file;  // a name in the folder, never a path that leads out of it
    std::string group;
    std::string channel;
    std::uint64_t first;
    std::uint64_t count;
};

/// Throws std::invalid_argument.
inline range_request to_request(const std::string& line)
{
    constexpr std::uint64_t most = 1'000'000;
    std::vector<std::string> fields;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = line.find('\t', begin);
        fields.push_back(line.substr(begin, end - begin));
    }
    if (fields.size() != 5 || line.find('\0') != std::string::npos) {
        throw std::invalid_argument(
            "a request is FILE, GROUP, CHANNEL, FIRST, COUNT, separated by tabs");
    }
    range_request r{fields[0], fields[1], fields[2], to_number<std::uint64_t>(fields[3]),
                    to_number<std::uint64_t>(fields[4])};
    if (r.file.empty() || r.file.front() == '.' || r.file.find('/') != std::string::npos) {
        throw std::invalid_argument("not the name of a recording");
    }
    if (r.count > most) throw std::invalid_argument("more than a million values at once");
    return r;
}

#endif
