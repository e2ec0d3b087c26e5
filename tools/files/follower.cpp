#include "files/follower.h"

#include <poll.h>
#include <unistd.h>

#include "console/output.h"
#include "console/report.h"

namespace tool {

follower::follower(const input& from) : from_(from)
{
    if (from.is_copy())
        throw usage_error("--follow needs a file that can grow, not a pipe or standard input");
}

void follower::refresh(tdms::file& file)
{
    if (is_gone_) throw failure("the file was replaced or removed");
    is_gone_ = !from_.is_in_place();  // checked first, so that the last save is taken in
    try {
        file.refresh();
    } catch (const tdms::error& e) {
        if (e.status() != TDMS_FILE_READ) throw;
        throw failure("the file was truncated: it is being recorded again");
    }
}

void follower::wait(std::chrono::milliseconds time)
{
    pollfd standard_output{STDOUT_FILENO, 0, 0};
    poll(&standard_output, 1, static_cast<int>(time.count()));
    if ((standard_output.revents & POLLERR) != 0) throw closed_pipe{};
}

}  // namespace tool
