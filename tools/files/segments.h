#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "files/input.h"

namespace tool {

/// What one segment holds. Of a segment whose lead-in or metadata are not there, only the first
/// two are known.
struct segment_facts {
    std::uint64_t number;
    std::uint64_t offset;
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    std::uint64_t objects = 0;
    std::uint64_t properties = 0;
    std::uint64_t channels = 0;  // with values
    std::uint64_t values = 0;
    const char* state = "intact";  // or "truncated": the file ends within it; or "damaged"
};

/// What follows the last intact segment.
enum class file_end { nothing, truncated, damaged };

/// The intact segments at the beginning of a file, and why not all are.
struct intact_part {
    std::uint64_t segments = 0;
    std::uint64_t size = 0;
    std::uint64_t values = 0;
    std::uint64_t file_size = 0;
    file_end end = file_end::nothing;
    std::string fault;  // empty if the file is intact
};

/// Walks the segments of a file as the library does when it opens it, and accepts what the library
/// accepts. `visit` gets every segment, up to the first that is not intact.
intact_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit);

}  // namespace tool
