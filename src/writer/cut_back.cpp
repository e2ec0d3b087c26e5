#include "writer/cut_back.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "reader/file_window.h"
#include "reader/saved_end.h"

namespace tdms_impl {

bool is_ours(const option& file)
{
    struct stat facts {};
    if (fstat(fileno(file.stream), &facts) != 0) return false;
    const bool same =
        !S_ISREG(facts.st_mode) || static_cast<std::uint64_t>(facts.st_size) == file.saved_size;
    if (!same) errno = ESTALE;
    return same;
}

bool cut_back(option& file)
{
    if (!file.must_be_cut) return true;
    // A file that has become shorter is not extended.
    const std::int64_t size = size_of_file(fileno(file.stream));
    if (size >= 0 && static_cast<std::uint64_t>(size) < file.saved_size) return is_ours(file);
    int result = 0;
    do {
        result = ftruncate(fileno(file.stream), static_cast<off_t>(file.saved_size));
    } while (result != 0 && errno == EINTR);
    if (result == 0) {
        // save_file() continues from there.
        lseek(fileno(file.stream), static_cast<off_t>(file.saved_size), SEEK_SET);
        file.must_be_cut = false;
    }
    return !file.must_be_cut;
}

int report_write_error(option& file)
{
    if (!find_saved_size(file) || !cut_back(file)) return TDMS_WRITE;
    const int error = std::exchange(file.write_error, 0);
    if (error == 0) return TDMS_OK;
    errno = error;
    return TDMS_WRITE;
}

}  // namespace tdms_impl
