#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <limits>
#include <string>

#include "channel_data/staging.h"
#include "core/guarded.h"
#include "core/written_file.h"
#include "reader/object_path.h"
#include "reader/stored_values.h"
#include "writer/segment_builder.h"

namespace tdms_impl {
namespace {

constexpr std::uint64_t most_in_32_bits = std::numeric_limits<std::uint32_t>::max();

bool has_new(const property_map& properties)
{
    return std::any_of(properties.begin(), properties.end(), is_new);
}

// Whether the file has the object. What was in memory at a save is in it.
bool is_listed(const channel& c)
{
    return c.group->file->segment_count > c.saves_at_origin;
}

// The first save of a file lists all groups; later ones of save_file() only those with properties.
bool is_listed(const group& g)
{
    return g.listed || (g.saves_at_origin == 0 && g.file->segment_count != 0);
}

bool has_something_new(const channel& c)
{
    return is_unsaved(c) || !is_listed(c) || has_new(c.properties);
}

template <class Use>
void for_each_changed_channel(option& file, Use use)
{
    for (auto& [group_path, g] : file.groups) {
        for (auto& [channel_path, c] : g.channels) {
            if (has_something_new(c)) use(c);
        }
    }
}

// The functions that add any name and any text can add what no reader gives back. Nothing such is
// written.
bool reads_back(const property_map& properties)
{
    return std::all_of(properties.begin(), properties.end(), [](const auto& entry) {
        return !is_new(entry) || (entry.first.size() <= most_in_32_bits &&
                                  entry.second->data.size() <= most_in_32_bits);
    });
}

bool reads_back(const group& g)
{
    const bool path_fits = is_listed(g) || (g.path.size() <= most_in_32_bits &&
                                            parse_object_path(g.path).kind == object_kind::group);
    return path_fits && reads_back(g.properties);
}

bool reads_back(const channel& c)
{
    if (!is_listed(c)) {
        const object_path_parts parts = parse_object_path(c.path);
        const bool fits = c.path.size() <= most_in_32_bits && parts.kind == object_kind::channel &&
                          parts.group_path == c.group->path;
        if (!fits) return false;
    }
    const bool values_fit = c.data_type != TDMS_TYPE_STRING || c.data.size() <= most_in_32_bits;
    return values_fit && reads_back(c.properties);
}

// @return 0, or why the file could not be read after a save
int check_everything(option& file)
{
    int status = reads_back(file.properties) ? TDMS_OK : TDMS_ARGUMENT;
    for (const auto& [path, g] : file.groups) {
        if (!reads_back(g)) status = TDMS_ARGUMENT;
    }
    for_each_changed_channel(file, [&](channel& c) {
        if (!reads_back(c)) status = TDMS_ARGUMENT;
        // A channel that was removed from memory and created again keeps its type in the file.
        std::uint32_t type = c.data_type;
        if (status == TDMS_OK && type != 0) status = type_in_file(c, type);
        if (status == TDMS_OK && type != c.data_type) status = TDMS_CHANNEL_DATATYPE;
    });
    return status;
}

void add_index(segment_builder& built, const channel& c)
{
    if (!is_unsaved(c) && (is_listed(c) || c.data_type == 0)) {
        built.no_index();
    } else if (c.data_type == TDMS_TYPE_STRING) {
        built.string_index(c);
    } else {
        built.fixed_size_index(c);
    }
}

// One segment of all that is new: the file and the groups, then the channels, so that nothing that
// is not a channel comes after one. @return whether there is anything
bool build_segment(option& file, segment_bytes& out)
{
    segment_builder built(out);
    bool anything = has_new(file.properties);
    for (const auto& [path, g] : file.groups) {
        anything = anything || !is_listed(g) || has_new(g.properties);
    }
    std::size_t joined = 0;
    for_each_changed_channel(file, [&](const channel& c) {
        anything = true;
        if (is_unsaved(c)) joined += joined_size(c);
    });
    if (!anything) return false;
    const auto add = [&built](std::string_view path, const property_map& properties) {
        built.object(path);
        built.no_index();
        built.new_properties(properties);
    };
    if (file.segment_count == 0 || has_new(file.properties)) add(root_path, file.properties);
    for (const auto& [path, g] : file.groups) {
        if (!is_listed(g) || has_new(g.properties)) add(path, g.properties);
    }
    for_each_changed_channel(file, [&built](const channel& c) {
        built.object(c.path);
        add_index(built, c);
        built.new_properties(c.properties);
    });
    built.begin_raw_data(joined);
    for_each_changed_channel(file, [&built](const channel& c) {
        if (is_unsaved(c)) built.raw_data(c);
    });
    built.finish();
    return true;
}

void mark_saved(property_map& properties)
{
    for (auto& entry : properties) {
        if (is_new(entry)) entry.second->origin = property_origin::saved;
    }
}

// Small buffers stay for the next save.
void forget(byte_vector& bytes)
{
    constexpr std::size_t most_kept = std::size_t{4} << 20;
    if (bytes.capacity() > most_kept) byte_vector().swap(bytes);
    bytes.clear();
}

// What was written leaves memory, but for the properties, which can still be read.
void mark_everything_saved(option& file)
{
    for_each_changed_channel(file, [](channel& c) {
        mark_saved(c.properties);
        if (!is_unsaved(c)) return;
        forget(c.data);
        forget(c.text_ends);
        c.chunk_count = 0;
    });
    mark_saved(file.properties);
    for (auto& [path, g] : file.groups) {
        mark_saved(g.properties);
        g.listed = true;
    }
    ++file.segment_count;
}

// @return whether the system took all bytes; if not, errno
bool write_all(int file, segment_bytes::piece bytes)
{
    for (std::size_t done = 0; done != bytes.size();) {
        const ssize_t part = ::write(file, bytes.data() + done, bytes.size() - done);
        if (part < 0 && errno == EINTR) continue;
        if (part == 0) errno = ENOSPC;
        if (part <= 0) return false;
        done += static_cast<std::size_t>(part);
    }
    return true;
}

// Whether the process's limit of file sizes has room: beyond it, a write would be answered with
// a signal that ends the process.
bool within_limit(std::uint64_t end)
{
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
        end <= limit.rlim_cur) {
        return true;
    }
    errno = EFBIG;
    return false;
}

// Fails if something has gone wrong that has not been reported yet. The next call begins at the end
// of the last save that is intact.
int report_write_error(option& file)
{
    if (!find_saved_size(file) || !cut_back(file)) return TDMS_WRITE;
    const int error = std::exchange(file.write_error, 0);
    if (error == 0) return TDMS_OK;
    errno = error;
    return TDMS_WRITE;
}

int save(option& file)
{
    if (const int status = report_write_error(file)) return status;
    if (const int status = check_everything(file)) return status;
    segment_bytes& segment = file.channel_segment;
    if (!build_segment(file, segment)) return TDMS_OK;
    if (!is_ours(file)) return TDMS_WRITE;
    const int to = fileno(file.stream);
    const std::uint64_t end = file.saved_size + segment.size();
    const bool placed = lseek(to, static_cast<off_t>(file.saved_size), SEEK_SET) >= 0;
    if (!placed || !within_limit(end)) return TDMS_WRITE;
    const auto write = [to](segment_bytes::piece bytes) { return write_all(to, bytes); };
    if (!segment.for_each_piece(write)) {
        const int reason = errno;
        file.must_be_cut = true;
        cut_back(file);
        errno = reason;
        return TDMS_WRITE;
    }
    file.saved_size = end;
    segment.clear();
    forget(segment.joined());
    mark_everything_saved(file);
    return TDMS_OK;
}

// Makes sure that the name of the file survives, too.
bool sync_entry(int file)
{
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    std::string path(4096, '\0');
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (length < 0) return false;
    path.resize(static_cast<std::size_t>(length));
    path.resize(path.rfind('/') + 1);
    const descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems have nothing to sync there.
    return folder.get() >= 0 && (fsync(folder.get()) == 0 || errno == EINVAL);
}

int sync(option& file)
{
    if (const int status = report_write_error(file)) return status;
    // What the system could not write once it may count as written from then on.
    if (file.sync_error == 0) {
        int result = 0;
        do {
            result = fdatasync(fileno(file.stream));
        } while (result != 0 && errno == EINTR);
        if (result != 0 && errno != EINVAL) file.sync_error = errno;
    }
    if (file.sync_error != 0) {
        errno = file.sync_error;
        return TDMS_WRITE;
    }
    if (!file.entry_synced && !sync_entry(fileno(file.stream))) return TDMS_WRITE;
    file.entry_synced = true;
    return TDMS_OK;
}

}  // namespace
}  // namespace tdms_impl

int tdms_save(void* file)
{
    return tdms_impl::guarded_change<tdms_impl::option>(file, tdms_impl::save);
}

int tdms_sync(void* file)
{
    return tdms_impl::guarded_change<tdms_impl::option>(file, tdms_impl::sync);
}
