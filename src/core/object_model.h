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
#include "core/descriptor.h"
#include "tdms.h"

namespace tdms {

/// Objects by path, or properties by name, in byte order; the map is their only owner. Keys can be
/// looked up without making a string of them.
template <class T>
using object_map = std::map<std::string, std::shared_ptr<T>, std::less<>>;

struct group;
struct option;
class value_index;

/// What every object that a handle can refer to begins with: it distinguishes handles of different
/// kinds from each other, and from most other memory.
enum class handle_tag : std::uint64_t {
    file = 0x3a656c6966534d54,
    group = 0x3a70756f72674d54,
    channel = 0x3a6e6e6168434d54
};

enum class property_origin : std::uint8_t { created, read, saved };

struct property {
    std::uint32_t data_type;
    std::basic_string<unsigned char> data;  // as it is in the file; a NUL follows it in memory
    property_origin origin = property_origin::created;
};

using property_map = object_map<property>;

struct channel {
    handle_tag tag = handle_tag::channel;
    std::string name;
    std::string group_path;
    std::string path;
    std::uint32_t data_type;    // 0 while the channel has no type
    std::uint64_t chunk_count;  // values staged, or values of the latest raw data index
    std::uint64_t value_count;  // values in the file when it was opened
    std::uint64_t chunk_size;   // bytes of the latest raw data index met while fetching values
    tdms::group* group;
    property_map properties;
    byte_vector data;               // staged values, as they will be in the file
    byte_vector text_ends;          // of staged strings: the table that precedes them in the file
    std::uint64_t saves_at_origin;  // segment_count when it was created, or got its type
    std::uint64_t saves_at_staging;
};

struct group {
    handle_tag tag = handle_tag::group;
    std::string name;
    std::string path;
    option* file;
    object_map<channel> channels;
    property_map properties;
    bool unquoted;  // the file it came from has a channel path without its quotes
    std::uint64_t saves_at_origin;
    bool listed;  // since then: by tdms_save(), or for its properties
};

class channel_values;

/// One open file. Group and channel handles come in as untyped pointers; they are validated by
/// looking their paths up, never by their addresses.
struct option {
    handle_tag tag = handle_tag::file;
    std::FILE* stream;  // null when there is none, or a failed read closed it
    std::uint64_t file_size;
    std::uint64_t segment_count;  // 0 until the first save of a new file; every save counts
    object_map<group> groups;
    property_map properties;
    byte_vector time_segment;  // the two segments of a save, kept for their capacity
    byte_vector channel_segment;

    std::uint64_t last_segment;  // of a file that is followed: where the last segment known begins
    bool replaced;               // the file that is followed is no longer the one that was opened
    bool writable;               // opened with "w" or "a"
    bool unquoted;               // the file has a group path without its quotes
    bool objects_removed;        // from memory; the file may hold values of a channel among them
    bool saved_by_stream;        // since `saved_size` was found out
    bool must_be_cut;            // the file has bytes after `saved_size` that must go
    bool entry_synced;           // the name of a new file survives a loss of power
    std::uint64_t taken_size;    // what the file held when a stream's write failed first
    int write_error;             // errno of a write that failed and has not been reported yet
    int sync_error;              // errno of a sync that failed: for what it concerned, for good
    std::uint64_t saved_size;    // of a writable file: where its last intact save ends
    descriptor reader;           // for a stream that cannot be read
    std::shared_ptr<value_index> stored;  // null until it is needed

    int open_file(const std::string& path, const std::string& mode);

    int create_channel(const void* group_handle, std::string_view name, void** handle);
    int get_channel_datatype(const void* handle);
    int get_num_channel_data(const void* handle, std::uint64_t& count);

    /// Stages a copy of `bytes`, or `bytes` themselves.
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         std::span<const unsigned char> bytes);
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         byte_vector&& bytes, byte_vector&& text_ends = {});
    int get_channel_data(const void* handle, channel_values& values);

    bool write_time(byte_vector& out) const;
    void write_channel(byte_vector& out) const;
};

/// A read that fails closes the stream for good. @return the status of the read
inline int close_unreadable(option& file, int status)
{
    if (status == TDMS_FILE_READ) {
        std::fclose(file.stream);
        file.stream = nullptr;
    }
    return status;
}

}  // namespace tdms

/// The open files, in the order of opening; their only owner.
TDMS_API extern std::vector<std::shared_ptr<tdms::option>> fileHandles;

/// Guards fileHandles.
TDMS_API extern std::mutex mtx;
