#include <algorithm>
#include <cstdio>

#include "core/c_string.h"
#include "core/registry.h"
// A file is opened by reading it.
#include "reader/tree_reader.h"

namespace tdms_impl {

int option::open_file(const std::string& path, const std::string& mode)
{
    if (mode == "r") return read_tree(*this, path);
    if (mode == "w") {
        stream = std::fopen(path.c_str(), "wb");
        writable = true;
        return stream == nullptr ? TDMS_FILE_PATH : TDMS_OK;
    }
    if (mode == "a") {
        // Deliberate: whatever fails while reading is returned as a failed read.
        if (read_tree(*this, path) != TDMS_OK) return TDMS_FILE_READ;
        // Deliberate: the stream that was read is left open, and the new one is not checked.
        stream = std::fopen(path.c_str(), "ab");
        writable = true;
        saved_size = file_size;
        segment_count = 1;
        return TDMS_OK;
    }
    // Deliberate: any other mode succeeds without a stream.
    return TDMS_OK;
}

}  // namespace tdms_impl

int open_file(const char* path, const char* mode, void** file)
{
    tdms_impl::registry& open = tdms_impl::open_files();
    const std::lock_guard guard(open.lock);
    auto opened = std::make_shared<tdms_impl::option>();
    const std::string mode_text(tdms_impl::not_null(mode));
    const std::string path_text(tdms_impl::not_null(path));
    if (file == nullptr) return TDMS_FILE_HANDLE;
    // Room in the registry comes first: if there is none, nothing is opened and no file emptied.
    if (open.files.size() == open.files.capacity()) open.files.reserve(2 * open.files.size() + 1);
    // Deliberate: a failure may leave the stream open; it is not closed here.
    if (const int status = opened->open_file(path_text, mode_text)) return status;
    open.files.push_back(opened);
    *file = opened.get();
    return TDMS_OK;
}

int close_file(void** file)
{
    if (file == nullptr) return TDMS_FILE_HANDLE;
    tdms_impl::registry& open = tdms_impl::open_files();
    const std::lock_guard guard(open.lock);
    auto* const closing = static_cast<tdms_impl::option*>(*file);
    if (closing == nullptr) return TDMS_FILE_HANDLE;
    if (closing->stream != nullptr) std::fclose(closing->stream);
    closing->stream = nullptr;
    closing->groups.clear();
    closing->properties.clear();
    auto entry = std::find_if(open.files.begin(), open.files.end(),
                              [closing](const auto& held) { return held.get() == closing; });
    // Deliberate: for a file that is not registered, the last entry is erased in its place.
    if (entry == open.files.end() && !open.files.empty()) --entry;
    if (entry != open.files.end()) open.files.erase(entry);
    *file = nullptr;
    return TDMS_OK;
}

int delete_file(const char* path)
{
    const std::string path_text(tdms_impl::not_null(path));
    return std::remove(path_text.c_str()) == 0 ? TDMS_OK : TDMS_FILE_DELETE;
}
