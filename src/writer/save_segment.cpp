#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>

#include "core/guarded.h"
#include "core/object_path.h"
#include "reader/stored_values.h"
#include "writer/cut_back.h"
#include "writer/unsaved.h"

namespace tdms_impl {
namespace {

// @return 0, or why a reader would not give back what is saved
int check_reads_back(option& file)
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

bool states_values(const channel& c)
{
    return is_unsaved(c) || (!is_listed(c) && c.data_type != 0);
}

// One segment of all that is new: the file and the groups, then the channels, so that nothing that
// is not a channel comes after one. @return whether there is anything
bool build_segment(option& file, segment_bytes& out)
{
    segment_builder built(out);
    bool anything = has_new(file.properties);
    for (const auto& [path, g] : file.groups) {
        anything = anything || has_something_new(g);
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
        if (has_something_new(g)) add(path, g.properties);
    }
    for_each_changed_channel(file, [&built](const channel& c) {
        built.object(c.path);
        if (states_values(c)) {
            built.index(c);
        } else {
            built.no_index();
        }
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

// Saved values leave memory; properties stay, so they can still be read.
void mark_everything_saved(option& file)
{
    for_each_changed_channel(file, [](channel& c) {
        mark_saved(c.properties);
        if (!is_unsaved(c)) return;
        forget(c.data);
        forget(c.string_ends);
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

// Whether the process's limit on file sizes leaves room: writing beyond it raises a signal that
// terminates the process.
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

int save(option& file)
{
    if (const int status = report_write_error(file)) return status;
    if (const int status = check_reads_back(file)) return status;
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

}  // namespace
}  // namespace tdms_impl

int tdms_save(void* file)
{
    return tdms_impl::guarded_change<tdms_impl::option>(file, tdms_impl::save);
}
