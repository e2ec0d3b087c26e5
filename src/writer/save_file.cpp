#include <cstdio>

#include "core/object_path.h"
#include "reader/saved_end.h"
#include "writer/segment_builder.h"

namespace tdms_impl {
namespace {

void drop_properties(option& file)
{
    file.properties.clear();
    for (auto& [group_path, g] : file.groups) {
        g.listed |= !g.properties.empty();
        g.properties.clear();
        for (auto& [channel_path, c] : g.channels) c.properties.clear();
    }
}

void write_segment(option& file, segment_bytes& segment)
{
    const bool sound = file.writable && ferror_unlocked(file.stream) == 0;
    // Deliberate: the stream's errors are not reported, but kept for tdms_save(). Nothing is
    // written after a piece that failed.
    static_cast<void>(segment.for_each_piece([&file](segment_bytes::piece bytes) {
        return std::fwrite(bytes.data(), 1, bytes.size(), file.stream) == bytes.size();
    }));
    segment.clear();
    if (sound && ferror_unlocked(file.stream) != 0) note_failed_write(file);
}

}  // namespace

// The timestamp segment: new objects and properties, and the values of the timestamp channels.
// Returns whether it holds properties.
bool option::write_time(segment_bytes& out) const
{
    segment_builder built(out);
    bool any_properties = false;
    // The first segment of a file lists the file and all groups, others only those with properties.
    const auto add_if_listed = [&](std::string_view path, const property_map& own) {
        if (own.empty() && segment_count != 0) return;
        any_properties |= !own.empty();
        built.object(path);
        built.no_index();
        built.properties(own);
    };
    const channel* last = nullptr;
    add_if_listed(root_path, properties);
    for (const auto& [group_path, g] : groups) {
        add_if_listed(group_path, g.properties);
        for (const auto& [channel_path, c] : g.channels) {
            const bool timestamps = c.data_type == TDMS_TYPE_TIMESTAMP;
            if (!timestamps && c.properties.empty()) continue;
            any_properties |= !c.properties.empty();
            built.object(channel_path);
            if (timestamps) {
                built.index(c);
                // Deliberate: every timestamp channel states its values, but only those of the
                // last one are in the raw data.
                last = &c;
            } else {
                built.no_index();
            }
            built.properties(c.properties);
        }
    }
    built.begin_raw_data(last == nullptr ? 0 : joined_size(*last));
    if (last != nullptr) built.raw_data(*last);
    built.finish();
    return any_properties;
}

// The channel segment: the values of all other channels.
// Deliberate: the count is not checked against the values. A channel that was read from the file
// and not staged since repeats the count of its latest index.
void option::write_channel(segment_bytes& out) const
{
    segment_builder built(out);
    std::size_t joined = 0;
    const auto for_each_channel = [this](auto use) {
        for (const auto& [group_path, g] : groups) {
            for (const auto& [channel_path, c] : g.channels) {
                if (c.data_type != TDMS_TYPE_TIMESTAMP) use(channel_path, c);
            }
        }
    };
    for_each_channel([&](std::string_view path, const channel& c) {
        built.object(path);
        built.index(c);
        built.no_properties();
        joined += joined_size(c);
    });
    built.begin_raw_data(joined);
    for_each_channel([&](std::string_view, const channel& c) { built.raw_data(c); });
    built.finish();
}

}  // namespace tdms_impl

int save_file(void* file)
{
    auto* const saved = static_cast<tdms_impl::option*>(file);
    if (saved == nullptr || saved->stream == nullptr) return TDMS_FILE_HANDLE;
    // Both are complete before anything is written or dropped: if memory runs out, nothing is lost,
    // and no half of a save is written.
    const bool properties_written = saved->write_time(saved->time_segment);
    saved->write_channel(saved->channel_segment);
    saved->saved_by_stream = true;
    tdms_impl::write_segment(*saved, saved->time_segment);
    tdms_impl::write_segment(*saved, saved->channel_segment);
    // Properties are written once.
    if (properties_written) tdms_impl::drop_properties(*saved);
    ++saved->segment_count;
    return TDMS_OK;
}
