#include "reader/tree_reader.h"

#include "core/text.h"
#include "reader/metadata.h"
#include "reader/object_finder.h"
#include "reader/object_path.h"
#include "reader/segment_walk.h"

namespace tdms {
namespace {

// Grows the tree by the metadata of one segment after the other.
class tree_builder {
  public:
    explicit tree_builder(option& file) : file_(file), groups_(file.groups) {}

    int add_segment(std::span<const unsigned char> metadata)
    {
        metadata_cursor cursor(metadata);
        const std::uint32_t object_count = cursor.u32();
        for (std::uint32_t i = 0; i != object_count && cursor.ok(); ++i) {
            if (const int status = add_object(cursor)) return status;
        }
        return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_READ;
    }

  private:
    int add_object(metadata_cursor& cursor)
    {
        const std::string_view path = cursor.string();
        const object_path_parts parts = parse_object_path(path);
        switch (parts.kind) {
            case object_kind::invalid:
                return TDMS_CHANNEL_READ;
            case object_kind::file:
                skip_index(cursor);
                return add_properties(cursor, file_.properties);
            case object_kind::group:
                break;
            case object_kind::channel:
                return add_channel(cursor, path, parts);
        }
        find_or_add_group(path);
        skip_index(cursor);
        return add_properties(cursor, group_->properties);
    }

    int add_channel(metadata_cursor& cursor, std::string_view path, const object_path_parts& parts)
    {
        // The group need not have been listed: this library itself does not write a group that was
        // created after the first save and has no properties.
        find_or_add_group(parts.group_path);
        channel& found = find_or_add_channel(path, parts.name);
        const raw_data_index index = read_raw_data_index(cursor);
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        if (const int status = apply_index(index, found.data_type, found.chunk_count))
            return status;
        if (index.form != index_none) found.value_count += found.chunk_count;
        return add_properties(cursor, found.properties);
    }

    // Makes the group at `path` the current one.
    void find_or_add_group(std::string_view path)
    {
        if (group_ != nullptr && group_->path == path) return;
        group* found = groups_.find(path);
        if (found == nullptr) {
            found = &groups_.add(path);
            found->name = group_name(path);
            found->path = path;
            found->file = &file_;
        }
        group_ = found;
        channels_ = object_finder<channel>(found->channels);
    }

    channel& find_or_add_channel(std::string_view path, std::string_view name)
    {
        if (channel* const found = channels_.find(path)) return *found;
        channel& added = channels_.add(path);
        added.name = name;
        added.group_path = group_->path;
        added.path = path;
        added.group = group_;
        if (path != object_path(group_->path, name)) group_->unquoted = true;
        return added;
    }

    // The file and groups have no raw data. An index that they state all the same is passed over.
    static void skip_index(metadata_cursor& cursor)
    {
        const std::uint32_t first = cursor.peek_u32();
        cursor.bytes(first == index_as_before || first == index_none ? 4 : first);
    }

    static int add_properties(metadata_cursor& cursor, property_map& properties)
    {
        const std::uint32_t count = cursor.u32();
        for (std::uint32_t i = 0; i != count && cursor.ok(); ++i) {
            const property_entry entry = read_property(cursor);
            if (!cursor.ok()) break;
            auto found = properties.find(entry.name);
            if (found == properties.end()) {
                found = properties.emplace(entry.name, std::make_shared<property>()).first;
            }
            found->second->data_type = entry.data_type;
            found->second->data.assign(entry.value.begin(), entry.value.end());
        }
        return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_READ;
    }

    option& file_;
    object_finder<group> groups_;
    group* group_ = nullptr;           // of the latest group or channel
    object_finder<channel> channels_;  // of that group
};

}  // namespace

int read_tree(option& file, const std::string& path)
{
    file.stream = std::fopen(path.c_str(), "rb");
    if (file.stream == nullptr) return TDMS_FILE_PATH;
    // The window is the buffer.
    std::setvbuf(file.stream, nullptr, _IONBF, 0);
    const std::int64_t size = stream_size(file.stream);
    if (size < 0) return reading_failed(file.stream);
    file.file_size = static_cast<std::uint64_t>(size);
    file_window window(file.stream, file.file_size);
    tree_builder tree(file);
    return walk_segments(file.stream, file.file_size, window,
                         [&tree](const segment& s) { return tree.add_segment(s.metadata); });
}

}  // namespace tdms
