#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/byte_vector.h"
#include "tdms.h"

namespace tdms {

/// Objects by path, or properties by name, in byte order; the map is their only owner. Keys can be
/// looked up without making a string of them.
template <class T>
using object_map = std::map<std::string, std::shared_ptr<T>, std::less<>>;

struct group;
struct option;

struct property {
    std::uint32_t data_type;
    byte_vector data;  // as it stands in the file
};

using property_map = object_map<property>;

struct channel {
    std::string name;
    std::string group_path;
    std::string path;
    std::uint32_t data_type;    // 0 while the channel has no type
    std::uint64_t chunk_count;  // values staged, or values of the latest raw data index
    std::uint64_t value_count;  // values in the file when it was opened
    std::uint64_t chunk_size;   // bytes of the latest raw data index met while fetching values
    tdms::group* group;
    property_map properties;
    byte_vector data;  // staged values, as they will stand in the file
};

struct group {
    std::string name;
    std::string path;
    option* file;
    object_map<channel> channels;
    property_map properties;
    bool unquoted;  // the file it came from has a channel path without its quotes
};

class channel_values;

/// One open file. Group and channel handles come in as untyped pointers; they are validated by
/// looking their paths up, never by their addresses.
struct option {
    std::FILE* stream;  // null when there is none, or a failed read closed it
    std::uint64_t file_size;
    std::uint64_t segment_count;  // 0 until the first save of a new file
    object_map<group> groups;
    property_map properties;
    byte_vector time_segment;  // the two segments of a save, kept for their capacity
    byte_vector channel_segment;

    int open_file(const std::string& path, const std::string& mode);

    int create_channel(const void* group_handle, std::string_view name, void** handle);
    int get_channel_datatype(const void* handle);
    int get_num_channel_data(const void* handle, std::uint64_t& count);

    /// Stages a copy of `bytes`, or `bytes` themselves.
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         std::span<const unsigned char> bytes);
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         byte_vector&& bytes);
    int get_channel_data(const void* handle, channel_values& values);

    bool write_time(byte_vector& out) const;
    void write_channel(byte_vector& out) const;
};

}  // namespace tdms

/// The open files, in the order of opening; their only owner.
TDMS_API extern std::vector<std::shared_ptr<tdms::option>> fileHandles;

/// Guards fileHandles.
TDMS_API extern std::mutex mtx;
