#include "reader/tree_reader.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "reader/object_path.h"
#include "reader/repeated_metadata.h"
#include "reader/segment_walk.h"

namespace tdms_impl {
namespace {

enum class unknown_types { accepted, rejected };

// Grows the tree by the metadata of one segment after the other. The file and groups have no raw
// data; an index that they state all the same is skipped.
class tree_builder {
  public:
    /// @param known a tree whose channels' types and latest counts hold for those of `file`, too
    explicit tree_builder(option& file, unknown_types of_values = unknown_types::accepted,
                          option* known = nullptr)
        : file_(file), known_(known), of_values_(of_values)
    {
    }

    int add_segment(std::span<const unsigned char> metadata)
    {
        const auto* const known = seen_.recognise(metadata);
        if (known == nullptr) {
            settle();
            return seen_.parse(metadata, *this);
        }
        if (known->empty()) return TDMS_OK;
        if (seen_.in_a_row() > 1) {
            ++untaken_;
            return TDMS_OK;
        }
        settle();
        taken_ = known;
        return take_all(*known, *this);
    }

    /// Must follow the last segment: of metadata that is repeated in a row, nothing is new but the
    /// number of values, which is added once.
    void settle()
    {
        if (untaken_ == 0) return;
        for (const auto& [object, index] : *taken_) {
            if (object == nullptr || index.form == index_none) continue;
            // A segment may list a channel twice.
            if (is_explicit(index.form)) object->chunk_count = index.value_count;
            object->value_count += untaken_ * object->chunk_count;
        }
        untaken_ = 0;
    }

    // For repeated_metadata.
    struct listing {
        channel* object;  // null for the file or a group
        raw_data_index index;
    };

    int find(std::string_view path, metadata_cursor& cursor, listing& found)
    {
        const object_path_parts parts = parse_object_path(path);
        switch (parts.kind) {
            case object_kind::invalid:
                return TDMS_CHANNEL_READ;
            case object_kind::file:
                properties_ = &file_.properties;
                break;
            case object_kind::group:
                find_or_add_group(path);
                properties_ = &group_->properties;
                break;
            case object_kind::channel:
                return find_channel(cursor, path, parts, found);
        }
        skip_index(cursor);
        return TDMS_OK;
    }

    int take(const listing& found)
    {
        if (found.object == nullptr) return TDMS_OK;
        channel& of = *found.object;
        if (const int status = apply_index(found.index, of.data_type, of.chunk_count))
            return status;
        if (of_values_ == unknown_types::rejected) DataSize.at(of.data_type);
        if (found.index.form != index_none) of.value_count += of.chunk_count;
        return TDMS_OK;
    }

    void property(const property_entry& entry)
    {
        auto found = properties_->find(entry.name);
        if (found == properties_->end()) {
            found = properties_->emplace(entry.name, std::make_shared<tdms_impl::property>()).first;
        }
        tdms_impl::property& stored = *found->second;
        stored.data_type = entry.data_type;
        stored.data.assign(entry.value.begin(), entry.value.end());
        stored.origin = property_origin::read;
    }

  private:
    int find_channel(metadata_cursor& cursor, std::string_view path, const object_path_parts& parts,
                     listing& found)
    {
        // The group need not have been listed: this library itself does not write a group that was
        // created after the first save and has no properties.
        find_or_add_group(parts.group_path);
        found.object = &find_or_add_channel(path, parts.name);
        found.index = read_raw_data_index(cursor);
        properties_ = &found.object->properties;
        return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_READ;
    }

    // Makes the group at `path` the current one.
    void find_or_add_group(std::string_view path)
    {
        if (group_ != nullptr && group_->path == path) return;
        group_ = file_.groups.find(path);
        if (group_ != nullptr) return;
        group_ = &add_group(file_, path, std::string(group_name(path)));
        if (!is_quoted(path, {})) file_.unquoted = true;
    }

    channel& find_or_add_channel(std::string_view path, std::string_view name)
    {
        if (channel* const found = group_->channels.find(path)) return *found;
        channel& added = tdms_impl::add_channel(*group_, path, std::string(name));
        if (!is_quoted(path, group_->path)) group_->unquoted = true;
        if (known_ != nullptr) add_what_is_known(added);
        return added;
    }

    void add_what_is_known(channel& added) const
    {
        group* const owner = known_->groups.find(group_->path);
        const channel* const same = owner == nullptr ? nullptr : owner->channels.find(added.path);
        if (same == nullptr) return;
        added.data_type = same->data_type;
        added.chunk_count = same->chunk_count;
    }

    option& file_;
    option* known_;
    unknown_types of_values_;
    group* group_ = nullptr;              // of the latest group or channel
    property_map* properties_ = nullptr;  // of the latest object
    repeated_metadata<listing> seen_;
    const std::vector<listing>* taken_ = nullptr;  // last of what was recognised
    std::uint64_t untaken_ = 0;                    // its repetitions since then
};

// Merging takes over what is new and changes what is not, without allocating: a segment is added
// as a whole or not at all.
void merge(property_map& into, property_map& added) noexcept
{
    for (auto& [name, stored] : added) {
        const auto old = into.find(name);
        if (old == into.end()) continue;
        const bool same =
            old->second->data_type == stored->data_type && old->second->data == stored->data;
        if (same) continue;
        std::swap(old->second->data_type, stored->data_type);
        old->second->data.swap(stored->data);
    }
    into.merge(added);
}

void merge(group& into, group& added) noexcept
{
    merge(into.properties, added.properties);
    into.unquoted |= added.unquoted;
    for (auto& [path, c] : added.channels) {
        c.group = &into;
        channel* const grown = into.channels.find(path);
        if (grown == nullptr) continue;
        grown->data_type = c.data_type;
        grown->chunk_count = c.chunk_count;
        grown->value_count += c.value_count;
        merge(grown->properties, c.properties);
    }
    into.channels.take_from(added.channels);
}

void merge(option& into, option& added) noexcept
{
    merge(into.properties, added.properties);
    into.unquoted |= added.unquoted;
    for (auto& [path, g] : added.groups) {
        g.file = &into;
        if (group* const old = into.groups.find(path)) merge(*old, g);
    }
    into.groups.take_from(added.groups);
}

constexpr int cut_short = 1;

// Whether a file of `size` bytes, which is not intact at `offset`, ends within the segment there.
// If not, `status` is the segment's.
bool ends_within_segment(file_window& window, std::uint64_t offset, std::uint64_t size, int& status)
{
    const std::uint64_t left = size - offset;
    const unsigned char* const lead_in =
        window.view(offset, std::min<std::uint64_t>(left, lead_in_size));
    status = lead_in == nullptr ? TDMS_FILE_READ : check_lead_in(lead_in, left);
    if (status != TDMS_OK || left < lead_in_size) return status == TDMS_OK;
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    status = read_lead_in(lead_in, metadata_length, raw_length);
    const bool leads_backwards = raw_length > ~metadata_length;
    status = TDMS_FILE_READ;
    return metadata_length != 0 && !leads_backwards &&
           metadata_length + raw_length > left - lead_in_size;
}

// Adds the segments from `offset` to `size` to a tree, until `unwanted(segment)` gives a status.
// @return as walk_segments()
template <class Unwanted>
int add_segments(tree_builder& tree, option& file, file_window& window, std::uint64_t& offset,
                 std::uint64_t size, Unwanted unwanted)
{
    const int status = walk_segments(window, offset, size, [&](const segment& s) {
        if (const int reason = unwanted(s)) return reason;
        const int added = tree.add_segment(s.metadata);
        if (added == TDMS_OK) file.last_segment = s.begin();
        return added;
    });
    tree.settle();
    return status;
}

constexpr auto none_unwanted = [](const segment&) { return TDMS_OK; };

// Whether the last segment that is known is still where it was. If not, the file has been emptied
// and filled again.
bool is_same_file(const option& file, file_window& window)
{
    if (file.file_size == 0) return true;
    const unsigned char* const lead_in = window.view(file.last_segment, lead_in_size);
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    return lead_in != nullptr && read_lead_in(lead_in, metadata_length, raw_length) == TDMS_OK &&
           file.last_segment + lead_in_size + metadata_length + raw_length == file.file_size;
}

// The status of a call that reads metadata; an unknown data type is one, too.
template <class Call>
int with_known_types(Call call)
{
    try {
        return call();
    } catch (const std::out_of_range&) {
        return TDMS_DATATYPE;
    }
}

}  // namespace

int read_tree(option& file, const std::string& path)
{
    file.stream = std::fopen(path.c_str(), "rb");
    if (file.stream == nullptr) return TDMS_FILE_PATH;
    // The window is the buffer.
    std::setvbuf(file.stream, nullptr, _IONBF, 0);
    const std::int64_t size =
        std::fseek(file.stream, 0, SEEK_END) == 0 ? std::ftell(file.stream) : -1;
    if (size < 0) return close_unreadable(file, TDMS_FILE_READ);
    file.file_size = static_cast<std::uint64_t>(size);
    file_window window(fileno(file.stream), file.file_size);
    tree_builder tree(file);
    std::uint64_t offset = 0;
    return close_unreadable(
        file, add_segments(tree, file, window, offset, file.file_size, none_unwanted));
}

int read_all_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    tree_builder tree(file, unknown_types::rejected);
    file.file_size = 0;
    return with_known_types(
        [&] { return add_segments(tree, file, window, file.file_size, size, none_unwanted); });
}

int read_intact_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    tree_builder tree(file, unknown_types::rejected);
    file.file_size = 0;
    int status = with_known_types([&] {
        return add_segments(tree, file, window, file.file_size, size, [size](const segment& s) {
            return s.complete_in(size) ? TDMS_OK : cut_short;
        });
    });
    if (window.device_failed()) return TDMS_FILE_READ;
    const std::uint64_t intact = file.file_size;
    if (intact == 0 && status != TDMS_OK) {
        return status == cut_short || status == TDMS_FILE_READ
                   ? (ends_within_segment(window, 0, size, status) ? TDMS_OK : status)
                   : status;
    }
    if (status >= 0) return TDMS_OK;
    // The segment that is damaged may have left something in the tree.
    file.groups.clear();
    file.properties.clear();
    file.unquoted = false;
    return read_all_segments(file, from, intact);
}

int read_appended_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    file.replaced = file.replaced || size < file.file_size ||
                    (!is_same_file(file, window) && !window.device_failed());
    if (file.replaced) return TDMS_FILE_READ;
    static_cast<void>(walk_segments(window, file.file_size, size, [&](const segment& s) {
        if (!s.complete_in(size)) return cut_short;
        option added{};
        tree_builder tree(added, unknown_types::rejected, &file);
        const int status = with_known_types([&] { return tree.add_segment(s.metadata); });
        if (status != TDMS_OK) return status;
        merge(file, added);
        file.last_segment = s.begin();
        return status;
    }));
    return window.device_failed() ? TDMS_FILE_READ : TDMS_OK;
}

}  // namespace tdms_impl
