// tdms_open() and the other functions of its interface that open, follow and close files.

#include <algorithm>

#include "core/file_being_opened.h"
#include "core/guarded.h"
#include "core/registry.h"
// Opening reads the file, and closing removes what was not saved completely: only here and in
// file.cpp does the core depend on the reader and the writer.
#include "reader/file_window.h"
#include "reader/saved_end.h"
#include "reader/tree_reader.h"
#include "writer/cut_back.h"

namespace tdms_impl {
namespace {

// Registers a file that was read, or is to be written, as a handle.
int become_handle(std::shared_ptr<option> opened, file_being_opened& from, open_mode mode,
                  void** handle)
{
    registry& open = open_files();
    const std::lock_guard guard(open.lock);
    // Room in the registry comes first: without it, no file is emptied.
    if (open.files.size() == open.files.capacity()) open.files.reserve(2 * open.files.size() + 1);
    if (mode == open_mode::write && !from.truncate()) return TDMS_FILE_PATH;
    opened->stream = from.release();
    *handle = opened.get();
    open.files.push_back(std::move(opened));
    return TDMS_OK;
}

// The counts that the file states are not those of staged values.
void forget_latest_counts(option& file)
{
    for (auto& [group_path, g] : file.groups) {
        for (auto& [channel_path, c] : g.channels) c.chunk_count = 0;
    }
}

int open(const char* path, open_mode mode, void** handle)
{
    auto opened = std::make_shared<option>();
    file_being_opened from(path, mode);
    const std::int64_t size = from.open();
    if (size < 0) return errno == ENOMEM ? TDMS_MEMORY : TDMS_FILE_PATH;
    if (mode != open_mode::write) {
        const int status =
            read_all_segments(*opened, from.file(), static_cast<std::uint64_t>(size));
        if (status != TDMS_OK) return status;
    }
    opened->writable = mode != open_mode::read;
    opened->saved_size = opened->file_size;
    opened->segment_count = mode == open_mode::append ? 1 : 0;
    if (mode == open_mode::append) forget_latest_counts(*opened);
    return become_handle(std::move(opened), from, mode, handle);
}

int open_partial(const char* path, void** handle, std::uint64_t* rest)
{
    auto opened = std::make_shared<option>();
    file_being_opened from(path, open_mode::read);
    const std::int64_t size = from.open();
    if (size < 0) return errno == ENOMEM ? TDMS_MEMORY : TDMS_FILE_PATH;
    const int status = read_intact_segments(*opened, from.file(), static_cast<std::uint64_t>(size));
    if (status != TDMS_OK) return status;
    const std::uint64_t after = static_cast<std::uint64_t>(size) - opened->file_size;
    const int registered = become_handle(std::move(opened), from, open_mode::read, handle);
    if (registered == TDMS_OK && rest != nullptr) *rest = after;
    return registered;
}

int refresh(option& file, std::uint64_t* rest)
{
    std::uint64_t after = 0;
    if (!file.writable) {
        const int from = file.stream == nullptr ? -1 : fileno(file.stream);
        const std::int64_t size = size_of_file(from);
        if (size < 0) return TDMS_FILE_READ;
        const auto end = static_cast<std::uint64_t>(size);
        if (const int status = read_appended_segments(file, from, end)) return status;
        after = end - file.file_size;
    }
    if (rest != nullptr) *rest = after;
    return TDMS_OK;
}

// Removes what either interface did not write completely. @return whether nothing of it is left
bool leave_intact(option& file)
{
    try {
        return find_saved_size(file) && cut_back(file);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return false;
    }
}

// Closes the file that is registered at the address; nothing else is a handle.
int close(void** handle)
{
    registry& open = open_files();
    const std::lock_guard guard(open.lock);
    const auto entry = std::find_if(open.files.begin(), open.files.end(),
                                    [handle](const auto& held) { return held.get() == *handle; });
    if (entry == open.files.end()) return TDMS_ARGUMENT;
    option& closing = **entry;
    int error = 0;
    if (closing.stream != nullptr) {
        if (!leave_intact(closing)) error = errno;
        if (closing.write_error != 0) error = closing.write_error;
        if (std::fclose(closing.stream) != 0 && closing.writable && error == 0) error = errno;
        closing.stream = nullptr;
    }
    // A program that looked into the registry may still own the object.
    closing.groups.clear();
    closing.properties.clear();
    closing.stored.reset();
    closing.reader.reset();
    open.files.erase(entry);
    *handle = nullptr;
    if (error == 0) return TDMS_OK;
    errno = error;
    return TDMS_WRITE;
}

}  // namespace
}  // namespace tdms_impl

int tdms_open(const char* path, const char* mode, void** file)
{
    if (path == nullptr || mode == nullptr || file == nullptr) return TDMS_ARGUMENT;
    return tdms_impl::guarded([&]() -> int {
        const std::string_view wanted = mode;
        if (wanted == "r") return tdms_impl::open(path, tdms_impl::open_mode::read, file);
        if (wanted == "w") return tdms_impl::open(path, tdms_impl::open_mode::write, file);
        if (wanted == "a") return tdms_impl::open(path, tdms_impl::open_mode::append, file);
        return TDMS_ARGUMENT;
    });
}

int tdms_open_partial(const char* path, void** file, uint64_t* rest)
{
    if (path == nullptr || file == nullptr) return TDMS_ARGUMENT;
    return tdms_impl::guarded([&] { return tdms_impl::open_partial(path, file, rest); });
}

int tdms_refresh(void* file, uint64_t* rest)
{
    return tdms_impl::guarded<tdms_impl::option>(
        file, [rest](tdms_impl::option& opened) { return tdms_impl::refresh(opened, rest); });
}

int tdms_close(void** file)
{
    if (file == nullptr || *file == nullptr) return TDMS_ARGUMENT;
    return tdms_impl::guarded([file] { return tdms_impl::close(file); });
}
