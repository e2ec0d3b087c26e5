#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "core/guarded.h"
#include "writer/cut_back.h"

namespace tdms_impl {
namespace {

// Syncs the folder, so that a new file's name survives a loss of power.
bool sync_entry(int file)
{
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    std::string path(4096, '\0');
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (length < 0) return false;
    path.resize(static_cast<std::size_t>(length));
    path.resize(path.rfind('/') + 1);
    const descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot sync a folder.
    return folder.get() >= 0 && (fsync(folder.get()) == 0 || errno == EINVAL);
}

int sync(option& file)
{
    if (const int status = report_write_error(file)) return status;
    // After a failed sync, the system may report later ones as successful.
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

int tdms_sync(void* file)
{
    return tdms_impl::guarded_change<tdms_impl::option>(file, tdms_impl::sync);
}
