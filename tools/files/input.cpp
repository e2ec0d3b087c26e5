#include "files/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "console/output.h"
#include "console/report.h"
#include "console/text.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

descriptor temporary_file()
{
    std::string path = temporary_directory() + "/tdms-XXXXXX";
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
        if (!write_to(copy.get(), bytes.data(), got)) throw system_failure("temporary file");
    }
    return copy;
}

descriptor open_or_throw(const std::string& name)
{
    descriptor file(name == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                : open(name.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) throw failure(message_of(TDMS_FILE_PATH, errno));
    return file;
}

struct stat facts_of(const descriptor& file)
{
    struct stat facts {};
    if (fstat(file.get(), &facts) != 0) throw failure(message_of(TDMS_FILE_PATH, errno));
    return facts;
}

}  // namespace

input::input(const std::string& name) : name_(name), path_(name), file_(open_or_throw(name))
{
    source_ = facts_of(file_);
    if (name == "-" || S_ISFIFO(source_.st_mode)) {
        file_ = copy_of(std::move(file_));
        is_copy_ = true;
    } else if (!S_ISREG(source_.st_mode)) {
        throw failure(S_ISDIR(source_.st_mode) ? "is a directory" : "is not a regular file");
    }
    const std::string opened = "/proc/self/fd/" + std::to_string(file_.get());
    if (access(opened.c_str(), R_OK) == 0) path_ = opened;
}

std::uint64_t input::size() const
{
    return static_cast<std::uint64_t>(facts_of(file_).st_size);
}

void input::reject_as_target(const std::string& target) const
{
    if (is_same(target)) throw usage_error("the output is the input file: " + in_quotes(target));
}

bool input::is_same(const std::string& name) const
{
    struct stat facts {};
    return stat(name.c_str(), &facts) == 0 && facts.st_dev == source_.st_dev &&
           facts.st_ino == source_.st_ino;
}

std::string temporary_directory()
{
    const char* const directory = std::getenv("TMPDIR");
    return directory != nullptr && *directory != '\0' ? directory : "/tmp";
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
