#include "reader/saved_end.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "reader/segment_walk.h"

namespace tdms_impl {

int reading_descriptor(option& file)
{
    if (file.stream == nullptr) return -1;
    const int own = fileno(file.stream);
    if (!file.writable || (fcntl(own, F_GETFL) & O_ACCMODE) != O_WRONLY) return own;
    if (file.reader.get() < 0) {
        const std::string same = "/proc/self/fd/" + std::to_string(own);
        file.reader.reset(open(same.c_str(), O_RDONLY | O_CLOEXEC));
    }
    return file.reader.get();
}

void note_failed_write(option& file)
{
    if (file.write_error == 0) file.write_error = errno != 0 ? errno : EIO;
    const std::int64_t size = size_of_file(fileno(file.stream));
    file.taken_size = size < 0 ? file.saved_size : static_cast<std::uint64_t>(size);
}

bool find_saved_size(option& file)
{
    if (!file.saved_by_stream || !file.writable || file.stream == nullptr) return true;
    const bool failed_before = std::ferror(file.stream) != 0;
    errno = 0;
    static_cast<void>(std::fflush(file.stream));
    const bool failed = std::ferror(file.stream) != 0;
    if (failed && !failed_before) note_failed_write(file);
    const std::int64_t size_now = size_of_file(fileno(file.stream));
    if (size_now < 0) return false;
    const auto size = static_cast<std::uint64_t>(size_now);
    std::uint64_t end = size;
    if (failed) {
        // Later saves may follow missing bytes, and seem to complete a truncated segment.
        const std::uint64_t taken = std::min(size, file.taken_size);
        const int from = reading_descriptor(file);
        if (from < 0) return false;
        end = file.saved_size;
        file_window window(from, taken);
        static_cast<void>(walk_segments(window, end, taken, [taken](const segment& s) {
            return s.complete_in(taken) ? TDMS_OK : TDMS_FILE_READ;
        }));
        errno = EIO;
        if (window.device_failed()) return false;
        std::clearerr(file.stream);
    }
    file.must_be_cut = end != size;
    file.saved_size = end;
    file.saved_by_stream = false;
    return true;
}

}  // namespace tdms_impl
