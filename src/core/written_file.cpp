#include "core/written_file.h"

#include <fcntl.h>

#include <string>

#include "reader/segment_walk.h"

namespace tdms {

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

bool find_saved_size(option& file)
{
    if (!file.saved_by_stream || !file.writable || file.stream == nullptr) return true;
    errno = 0;
    const bool taken = std::fflush(file.stream) == 0 && std::ferror(file.stream) == 0;
    if (!taken) file.write_error = errno != 0 ? errno : EIO;
    const std::int64_t size_now = size_of_file(fileno(file.stream));
    if (size_now < 0) return false;
    const auto size = static_cast<std::uint64_t>(size_now);
    std::uint64_t end = size;
    if (!taken) {
        const int from = reading_descriptor(file);
        if (from < 0) return false;
        end = file.saved_size;
        file_window window(from, size);
        static_cast<void>(walk_segments(window, end, size, [size](const segment& s) {
            return s.complete_in(size) ? TDMS_OK : TDMS_FILE_READ;
        }));
        errno = EIO;
        if (window.device_failed()) return false;
        std::clearerr(file.stream);
    }
    file.torn = end != size;
    file.saved_size = end;
    file.saved_by_stream = false;
    return true;
}

bool cut_back(option& file)
{
    if (!file.torn) return true;
    int result = 0;
    do {
        result = ftruncate(fileno(file.stream), static_cast<off_t>(file.saved_size));
    } while (result != 0 && errno == EINTR);
    if (result == 0) {
        // save_file() goes on from there.
        lseek(fileno(file.stream), static_cast<off_t>(file.saved_size), SEEK_SET);
        file.torn = false;
    }
    return !file.torn;
}

}  // namespace tdms
