#include "input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "console.h"
#include "measurement_file.h"

namespace tool {
namespace {

descriptor temporary_file()
{
    const char* const directory = std::getenv("TMPDIR");
    std::string path = std::string(directory == nullptr ? "/tmp" : directory) + "/tdms-XXXXXX";
    descriptor file(mkostemp(path.data(), O_CLOEXEC));
    if (file.get() < 0) throw system_failure("temporary file " + path);
    unlink(path.c_str());
    return file;
}

descriptor copy_of(descriptor source)
{
    descriptor copy = temporary_file();
    std::vector<char> bytes(1 << 18);
    while (const std::size_t got = read_some(source.get(), bytes.data(), bytes.size(), "reading")) {
        if (!write_all(copy.get(), bytes.data(), got)) throw system_failure("temporary file");
    }
    return copy;
}

descriptor open_or_throw(const std::string& name)
{
    descriptor file(name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) throw system_failure(message_of(TDMS_FILE_PATH));
    struct stat facts {};
    fstat(file.get(), &facts);
    if (name == "-" || S_ISFIFO(facts.st_mode)) return copy_of(std::move(file));
    if (S_ISREG(facts.st_mode)) return file;
    errno = S_ISDIR(facts.st_mode) ? EISDIR : ESPIPE;
    throw system_failure(message_of(TDMS_FILE_PATH));
}

}  // namespace

descriptor::~descriptor()
{
    close();
}

void descriptor::close()
{
    if (number_ >= 0) ::close(release());
}

input::input(const std::string& name) : name_(name), path_(name), file_(open_or_throw(name))
{
    struct stat facts {};
    fstat(file_.get(), &facts);
    size_ = static_cast<std::uint64_t>(facts.st_size);
    struct stat named {};
    const bool same = stat(name.c_str(), &named) == 0 && named.st_dev == facts.st_dev &&
                      named.st_ino == facts.st_ino;
    if (!same) path_ = "/proc/self/fd/" + std::to_string(file_.get());
}

std::FILE* input::stream() const
{
    descriptor copy(fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
    std::FILE* const stream = copy.get() < 0 ? nullptr : fdopen(copy.get(), "rb");
    if (stream == nullptr) throw system_failure(message_of(TDMS_FILE_PATH));
    copy.release();
    return stream;
}

std::size_t read_some(int file, char* bytes, std::size_t count, const std::string& what)
{
    for (;;) {
        const ssize_t got = read(file, bytes, count);
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) throw system_failure(what);
    }
}

}  // namespace tool
