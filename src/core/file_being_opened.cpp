#include "core/file_being_opened.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "core/descriptor.h"

namespace tdms_impl {

file_being_opened::~file_being_opened()
{
    const int reason = errno;
    if (created_) unlink(path_);  // while it is locked
    if (stream_ != nullptr) std::fclose(stream_);
    errno = reason;
}

std::int64_t file_being_opened::open()
{
    descriptor opened(open_descriptor());
    if (opened.get() < 0 || !lock(opened.get())) return -1;
    stream_ = fdopen(opened.get(), mode_ == open_mode::read ? "rb" : "a+b");
    if (stream_ == nullptr) return -1;
    // save_file() and the window need no buffer between.
    std::setvbuf(stream_, nullptr, _IONBF, 0);
    struct stat facts {};
    if (fstat(opened.release(), &facts) != 0) return -1;
    if (S_ISDIR(facts.st_mode)) {
        errno = EISDIR;
        return -1;
    }
    // A pipe or a terminal has no offsets.
    return lseek(file(), 0, SEEK_END);
}

bool file_being_opened::truncate() const
{
    struct stat facts {};
    return fstat(file(), &facts) == 0 && (!S_ISREG(facts.st_mode) || ftruncate(file(), 0) == 0);
}

std::FILE* file_being_opened::release()
{
    created_ = false;
    return std::exchange(stream_, nullptr);
}

int file_being_opened::open_descriptor()
{
    // O_NONBLOCK: a pipe is not waited for.
    if (mode_ == open_mode::read) return ::open(path_, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    constexpr int flags = O_RDWR | O_APPEND | O_NONBLOCK | O_CLOEXEC;
    const int existing = ::open(path_, flags);
    if (existing >= 0 || errno != ENOENT || mode_ == open_mode::append) return existing;
    const int created = ::open(path_, flags | O_CREAT | O_EXCL, 0666);
    created_ = created >= 0;
    if (created_ || errno != EEXIST) return created;
    // A dangling link, or a file that another program has just created.
    return ::open(path_, flags | O_CREAT, 0666);
}

// Two programs writing one file would destroy it. Not every file system has locks.
bool file_being_opened::lock(int file)
{
    if (mode_ == open_mode::read) return true;
    int result = 0;
    do {
        result = flock(file, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0 || errno != EWOULDBLOCK) return true;
    created_ = false;  // another program has it now
    return false;
}

}  // namespace tdms_impl
