#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "input.h"

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
    const char* state = "whole";  // or "torn": the file ends within it; or "damaged"
};

/// The first segments of a file that are sound, and why not all are.
struct sound_part {
    std::uint64_t segments = 0;
    std::uint64_t size = 0;
    std::uint64_t values = 0;
    std::uint64_t file_size = 0;
    /// All channels are of one group and stand behind the other objects, and the raw data have room
    /// for their values: then the library finds the values of every channel.
    bool regular = true;
    std::string fault;  // empty if the whole file is sound
};

/// Walks the segments of a file as the library does when it opens it, and accepts what the library
/// accepts. `visit` gets every segment, up to the first that is not sound.
sound_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit);

}  // namespace tool
