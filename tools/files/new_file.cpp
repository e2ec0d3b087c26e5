#include "files/new_file.h"

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
#include <filesystem>

#include "console/output.h"
#include "console/report.h"
#include "console/text.h"

namespace tool {
namespace {

// The path of the file that is being written, for the signal handler.
std::array<char, PATH_MAX> path_to_remove;
std::atomic<bool> any_to_remove = false;

constexpr std::array signals_to_die_of{SIGALRM, SIGHUP,  SIGINT,  SIGQUIT,
                                       SIGTERM, SIGUSR1, SIGUSR2, SIGXCPU};

void remove_and_die(int signal_number)
{
    if (any_to_remove) unlink(path_to_remove.data());
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}

// Signals that are ignored, as under nohup, stay ignored.
void remove_on_signals()
{
    for (const int number : signals_to_die_of) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) std::signal(number, remove_and_die);
    }
}

// Creates a file that is removed if a signal ends the process. Signals are blocked meanwhile.
// @param path is a template for mkostemp(), and becomes the name
int create_to_be_removed(std::string& path)
{
    remove_on_signals();
    sigset_t held;
    sigset_t before;
    sigemptyset(&held);
    for (const int number : signals_to_die_of) sigaddset(&held, number);
    sigprocmask(SIG_BLOCK, &held, &before);
    const int file = mkostemp(path.data(), O_CLOEXEC);
    path_to_remove[path.copy(path_to_remove.data(), path_to_remove.size() - 1)] = '\0';
    any_to_remove = file >= 0;
    const int error = errno;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return file;
}

// The path after all symbolic links, whether or not a file is there.
std::string without_links(std::filesystem::path path)
{
    std::error_code not_a_link;
    for (int links = 0; links != 40; ++links) {
        const std::filesystem::path next = std::filesystem::read_symlink(path, not_a_link);
        if (not_a_link) break;
        path.replace_filename(next);
    }
    return path;
}

}  // namespace

new_file::new_file(const std::string& target) : target_(without_links(target))
{
    const mode_t mask = umask(0);
    umask(mask);
    mode_t mode = 0666 & ~mask;
    struct stat facts {};
    if (stat(target_.c_str(), &facts) == 0) {
        if (!S_ISREG(facts.st_mode)) throw failure(in_quotes(target_) + " is not a regular file");
        mode = facts.st_mode & 0777;
    } else if (errno != ENOENT) {
        cannot_be_written();
    }
    path_ = std::filesystem::path(target_).replace_filename(".tdms-XXXXXX");
    create(mode);
}

new_file::new_file() : target_(temporary_directory()), path_(target_ + "/.tdms-XXXXXX")
{
    create(0600);
}

void new_file::create(mode_t mode)
{
    errno = ENAMETOOLONG;
    if (path_.size() >= path_to_remove.size()) cannot_be_written();
    file_ = descriptor(create_to_be_removed(path_));
    if (file_.get() < 0) cannot_be_written();
    static_cast<void>(fchmod(file_.get(), mode));  // not every file system has modes
}

new_file::~new_file()
{
    if (any_to_remove) unlink(path_.c_str());
    any_to_remove = false;
}

void new_file::write(std::string_view bytes)
{
    if (!write_to(file_.get(), bytes.data(), bytes.size())) cannot_be_written();
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
