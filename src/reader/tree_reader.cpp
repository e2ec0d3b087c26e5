#include "reader/tree_reader.h"

#include "reader/metadata.h"
#include "reader/object_finder.h"
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
    // The slashes of a path tell what it names: "/" alone the file, one slash a group, else a
    // channel, whose group's path ends before the second slash.
    int add_object(metadata_cursor& cursor)
    {
        const std::string_view path = cursor.string();
        if (path == root_path) {
            skip_index(cursor);
            return add_properties(cursor, file_.properties);
        }
        if (path.size() < 2) return TDMS_CHANNEL_READ;
        const std::size_t first_slash = path.find('/');
        if (first_slash == std::string_view::npos) return TDMS_CHANNEL_READ;
        if (path.find('/', first_slash + 1) == std::string_view::npos) {
            if (!find_or_add_group(path)) return TDMS_CHANNEL_READ;
            skip_index(cursor);
            return add_properties(cursor, group_->properties);
        }
        channel* const found = find_or_add_channel(path);
        if (found == nullptr) return TDMS_CHANNEL_READ;
        if (const int status = add_index(cursor, *found)) return status;
        return add_properties(cursor, found->properties);
    }

    // Makes the group at `path` the current one.
    bool find_or_add_group(std::string_view path)
    {
        if (group_ != nullptr && group_->path == path) return true;
        group* found = groups_.find(path);
        if (found == nullptr) {
            if (path.size() < 3) return false;
            found = &groups_.add(path);
            // The name is what stands between the first two characters and the last, whatever
            // those are.
            found->name = path.substr(2, path.size() - 3);
            found->path = path;
            found->file = &file_;
        }
        group_ = found;
        channels_ = object_finder<channel>(found->channels);
        return true;
    }

    // A channel's group need not have been listed: this library itself does not write a group that
    // was created after the first save and has no properties.
    channel* find_or_add_channel(std::string_view path)
    {
        const std::size_t split = path.find('/', 1);
        if (!find_or_add_group(path.substr(0, split))) return nullptr;
        channel* found = channels_.find(path);
        if (found == nullptr) {
            if (path.size() < split + 3) return nullptr;
            found = &channels_.add(path);
            found->name = path.substr(split + 2, path.size() - split - 3);
            found->group_path = group_->path;
            found->path = path;
            found->group = group_;
            if (path[split + 1] != '\'' || path.back() != '\'') group_->unquoted = true;
        }
        return found;
    }

    // The file and groups have no raw data. An index that they state all the same is passed over.
    static void skip_index(metadata_cursor& cursor)
    {
        const std::uint32_t first = cursor.peek_u32();
        cursor.bytes(first == index_as_before || first == index_none ? 4 : first);
    }

    static int add_index(metadata_cursor& cursor, channel& target)
    {
        const raw_data_index index = read_raw_data_index(cursor);
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        if (!is_known_form(index.form)) return TDMS_INDEX;
        if (is_explicit(index.form)) {
            if (target.data_type == 0) {
                target.data_type = index.data_type;
            } else {
                // Deliberate: what type an index of the string form states does not matter, as long
                // as the channel is known to hold strings.
                const std::uint32_t stated =
                    index.form == index_string ? std::uint32_t{TDMS_TYPE_STRING} : index.data_type;
                if (target.data_type != stated) return TDMS_CHANNEL_READ;
            }
            if (index.dimension != 1) return TDMS_CHANNEL_READ;
            target.chunk_count = index.value_count;
        }
        if (index.form != index_none) target.value_count += target.chunk_count;
        return TDMS_OK;
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
