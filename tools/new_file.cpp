#include "new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "console.h"

namespace tool {
namespace {

// The path of the file in the making, for the signal handler.
std::array<char, PATH_MAX> path_to_remove;
std::atomic<bool> any_to_remove = false;

void remove_and_die(int signal_number)
{
    if (any_to_remove) unlink(path_to_remove.data());
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}

}  // namespace

new_file::new_file(const std::string& target)
    : target_(target), path_(target + ".XXXXXX"), file_(-1)
{
    struct stat facts {};
    if (stat(target.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode)) {
        errno = S_ISDIR(facts.st_mode) ? EISDIR : EEXIST;
        cannot_be_written();
    }
    errno = ENAMETOOLONG;
    if (path_.size() >= path_to_remove.size()) cannot_be_written();
    file_ = descriptor(mkostemp(path_.data(), O_CLOEXEC));
    if (file_.get() < 0) cannot_be_written();
    path_to_remove[path_.copy(path_to_remove.data(), path_.size())] = '\0';
    any_to_remove = true;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, remove_and_die);
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(file_.get(), 0666 & ~mask) != 0) cannot_be_written();
}

new_file::~new_file()
{
    if (any_to_remove.exchange(false)) unlink(path_.c_str());
}

void new_file::write(const char* bytes, std::size_t count)
{
    if (!write_all(file_.get(), bytes, count)) cannot_be_written();
}

void new_file::cannot_be_written() const
{
    throw system_failure(in_quotes(target_) + " cannot be written");
}

void new_file::commit()
{
    if (fsync(file_.get()) != 0 || close(file_.release()) != 0 ||
        std::rename(path_.c_str(), target_.c_str()) != 0) {
        cannot_be_written();
    }
    any_to_remove = false;
}

}  // namespace tool
