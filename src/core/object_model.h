#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "core/byte_vector.h"
#include "core/descriptor.h"
#include "core/object_map.h"
#include "core/segment_bytes.h"
#include "tdms.h"

namespace tdms_impl {

struct group;
struct option;
class value_index;

/// The first member of every object that a handle can refer to. It distinguishes handles of
/// different kinds from each other, and from most other memory.
enum class handle_tag : std::uint64_t {
    file = 0x3a656c6966534d54,
    group = 0x3a70756f72674d54,
    channel = 0x3a6e6e6168434d54
};

enum class property_origin : std::uint8_t { created, read, saved };

struct property {
    std::uint32_t data_type;
    byte_string data;  // as it is in the file; a NUL follows it in memory
    property_origin origin = property_origin::created;
};

/// Properties by name, in byte order.
using property_map = std::map<std::string, std::shared_ptr<property>, std::less<>>;

struct channel {
    handle_tag tag = handle_tag::channel;
    std::string name;
    std::string_view path;      // its key in the map that owns it
    std::uint32_t data_type;    // 0 while the channel has no type
    std::uint64_t chunk_count;  // values staged, or values of the latest raw data index
    std::uint64_t value_count;  // values in the file when it was opened
    std::uint64_t chunk_size;   // bytes of the latest raw data index met while fetching values
    tdms_impl::group* group;
    property_map properties;
    byte_vector data;               // staged values, as they will be in the file
    byte_vector string_ends;        // of staged strings: the table that precedes them in the file
    std::uint64_t saves_at_origin;  // segment_count when it was created, or got its type
    std::uint64_t saves_at_staging;
};

struct group {
    handle_tag tag = handle_tag::group;
    std::string name;
    std::string_view path;
    option* file;
    object_map<channel> channels;
    property_map properties;
    bool unquoted;  // the file it came from has a channel path without its quotes
    std::uint64_t saves_at_origin;
    bool listed;  // in the file since then: by tdms_save(), or for its properties
};

/// One open file. Group and channel handles arrive as untyped pointers; they are validated by their
/// paths, never by their addresses.
struct option {
    handle_tag tag = handle_tag::file;
    std::FILE* stream;  // null when there is none, or a failed read closed it
    std::uint64_t file_size;
    std::uint64_t segment_count;  // 0 until the first save of a new file; every save counts
    object_map<group> groups;
    property_map properties;
    segment_bytes time_segment;  // the two segments of a save, kept for their capacity
    segment_bytes channel_segment;

    std::uint64_t last_segment;  // of a file that is followed: where the last segment known begins
    bool replaced;               // the file that is followed is no longer the one that was opened
    bool writable;               // opened with "w" or "a"
    bool unquoted;               // the file has a group path without its quotes
    bool objects_removed;        // from memory; the file may hold values of a channel among them
    bool saved_by_stream;        // since `saved_size` was determined
    bool must_be_cut;            // the file has bytes after `saved_size` that must go
    bool entry_synced;           // the name of a new file survives a loss of power
    std::uint64_t taken_size;    // what the file held when a stream's write failed first
    int write_error;             // errno of a write that failed and has not been reported yet
    int sync_error;              // errno of a sync that failed; reported from then on
    std::uint64_t saved_size;    // of a writable file: where its last intact save ends
    descriptor reader;           // for a stream that cannot be read
    std::shared_ptr<value_index> stored;  // null until it is needed

    // These are defined with their subjects: in core/file.cpp, core/channel.cpp,
    // channel_data/staging.cpp and writer/save_file.cpp.
    int open_file(const std::string& path, const std::string& mode);

    int create_channel(const void* group_handle, std::string_view name, void** handle);

    /// Stages a copy of `bytes`, or `bytes` themselves.
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         std::span<const unsigned char> bytes);
    int set_channel_data(const void* handle, std::uint32_t type, std::uint64_t count,
                         byte_vector&& bytes, byte_vector&& string_ends = {});

    bool write_time(segment_bytes& out) const;
    void write_channel(segment_bytes& out) const;
};

/// Adds a group at a path that has none. If memory runs out, the file stays as it is.
inline group& add_group(option& file, std::string_view path, std::string name)
{
    auto& [key, added] = file.groups.add(path);
    added.name = std::move(name);
    added.path = key;
    added.file = &file;
    added.saves_at_origin = file.segment_count;
    return added;
}

/// Turns a zeroed object into a channel of the group, at a path that the group owns.
inline channel& become_channel(channel& added, group& owner, std::string_view path,
                               std::string name) noexcept
{
    added.name = std::move(name);
    added.path = path;
    added.group = &owner;
    added.saves_at_origin = owner.file->segment_count;
    return added;
}

/// Adds a channel at a path that has none. If memory runs out, the group stays as it is.
inline channel& add_channel(group& owner, std::string_view path, std::string name)
{
    auto& [key, added] = owner.channels.add(path);
    return become_channel(added, owner, key, std::move(name));
}

/// Whether the channel has staged values that no save has written.
inline bool is_unsaved(const channel& c)
{
    const std::uint64_t saves = c.group->file->segment_count;
    return c.saves_at_staging == saves && (!c.data.empty() || !c.string_ends.empty());
}

/// A read that fails closes the stream for good. @return the status of the read
inline int close_unreadable(option& file, int status)
{
    if (status == TDMS_FILE_READ) {
        std::fclose(file.stream);
        file.stream = nullptr;
    }
    return status;
}

}  // namespace tdms_impl
