#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <exception>
#include <new>
#include <string_view>

#include "command_line.h"
#include "console/output.h"
#include "console/report.h"

namespace tool {
namespace {

int run(int argc, char** argv)
{
    try {
        return run_command_line(argc, argv);
    } catch (const closed_pipe&) {
        return any_reported() ? 1 : 0;
    } catch (const std::bad_alloc&) {
        constexpr std::string_view message = "tdms: out of memory\n";  // allocates nothing
        static_cast<void>(write_to(STDERR_FILENO, message.data(), message.size()));
    } catch (const std::exception& e) {
        report("", e.what());
    }
    return 1;
}

// The next file to be opened would get the number of a closed standard stream, and would be read or
// written as that stream. /dev/null takes the number instead, opened in the other direction, so
// that using the stream fails.
void fill_closed_streams()
{
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (fcntl(number, F_GETFD) >= 0) continue;
        static_cast<void>(open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

}  // namespace
}  // namespace tool

int main(int argc, char** argv)
{
    tool::fill_closed_streams();
    tzset();  // localtime_r() need not call it
    // If nobody reads our output, or a file may not grow, the write fails and that is reported.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);  // waitpid() fails if it is ignored
    return tool::run(argc, argv);
}
