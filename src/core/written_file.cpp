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

void find_saved_size(option& file)
{
    if (!file.saved_by_stream || !file.writable || file.stream == nullptr) return;
    errno = 0;
    const bool failed = std::fflush(file.stream) != 0 || std::ferror(file.stream) != 0;
    if (failed) file.write_error = errno != 0 ? errno : EIO;
    const int from = reading_descriptor(file);
    const std::int64_t size = from < 0 ? -1 : size_of_file(from);
    if (size < 0) return;
    std::clearerr(file.stream);
    file_window window(from, static_cast<std::uint64_t>(size));
    const int status =
        walk_segments(window, file.saved_size, static_cast<std::uint64_t>(size), [&](auto& s) {
            return s.complete_in(static_cast<std::uint64_t>(size)) ? 0 : TDMS_FILE_READ;
        });
    file.saved_by_stream = false;
    if (status == TDMS_OK) return;
    file.torn = true;
    if (file.write_error == 0) file.write_error = EIO;
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
