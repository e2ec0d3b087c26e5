#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// The bytes of a file, spelled out independently of the library.
template <class T>
std::string le(T value)
{
    std::string bytes;
    for (std::size_t i = 0; i != sizeof(T); ++i) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i));
    }
    return bytes;
}
constexpr auto u32 = le<std::uint32_t>;
constexpr auto u64 = le<std::uint64_t>;

// A string as files store it: its length, then its bytes.
inline std::string prefixed(const std::string& s)
{
    return u32(static_cast<std::uint32_t>(s.size())) + s;
}

const std::string none = u32(0xFFFFFFFF);
const std::string as_before = u32(0);
const std::string no_properties = u32(0);

inline std::string fixed_index(std::uint32_t type, std::uint64_t count, std::uint32_t dimension = 1)
{
    return u32(20) + u32(type) + u32(dimension) + u64(count);
}
inline std::string string_index(std::uint64_t count, std::uint64_t size, std::uint32_t type = 32)
{
    return u32(28) + u32(type) + u32(1) + u64(count) + u64(size);
}
// The properties of an object that has one, called p.
inline std::string property_p(std::uint32_t type, const std::string& value = {})
{
    return u32(1) + prefixed("p") + u32(type) + value;
}
inline std::string object(const std::string& path, const std::string& index,
                          const std::string& properties = no_properties)
{
    return prefixed(path) + index + properties;
}
inline std::string int32s(const std::string& path, std::uint64_t count)
{
    return object(path, fixed_index(3, count));
}
inline std::string lead_in(std::uint64_t metadata, std::uint64_t raw)
{
    return "TDSm" + u32(14) + u32(4713) + u64(metadata + raw) + u64(metadata);
}
// One segment whose metadata is these bytes after the object count.
inline std::string metadata(std::uint32_t objects, const std::string& bytes)
{
    return lead_in(4 + bytes.size(), 0) + u32(objects) + bytes;
}
inline std::string segment(const std::vector<std::string>& objects, const std::string& raw = {})
{
    std::string metadata = u32(static_cast<std::uint32_t>(objects.size()));
    for (const std::string& o : objects) metadata += o;
    return lead_in(metadata.size(), raw.size()) + metadata + raw;
}

// Where the segments of a file begin, and where the last one ends.
inline std::vector<std::size_t> segment_offsets(const std::string& file)
{
    std::vector<std::size_t> offsets{0};
    while (offsets.back() != file.size()) {
        std::uint64_t length = 0;
        std::memcpy(&length, &file.at(offsets.back() + 12), sizeof length);
        offsets.push_back(offsets.back() + 28 + length);
    }
    return offsets;
}
