#include "plotting/child_process.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>

#include "console/report.h"

namespace tool {

child_process::child_process(const std::string& what)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw system_failure(what);
    end_ = descriptor(ends[1]);
    descriptor source(ends[0]);
    output_.reset(fdopen(source.get(), "rb"));
    if (output_ == nullptr) throw system_failure(what);
    source.release();
    number_ = fork();
    if (number_ < 0) throw system_failure(what);
}

int child_process::wait()
{
    output_.reset();
    int status = -1;
    while (number_ > 0 && waitpid(number_, &status, 0) < 0 && errno == EINTR) {
    }
    number_ = -1;
    return status;
}

}  // namespace tool
