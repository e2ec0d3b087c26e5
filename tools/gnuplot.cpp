#include "gnuplot.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "console.h"
#include "input.h"

namespace tool {
namespace {

constexpr int not_found = 127;

[[noreturn]] void become_gnuplot(int source, int target)
{
    dup2(source, STDIN_FILENO);
    dup2(target, STDOUT_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    setenv("LC_ALL", "C.UTF-8", 1);  // the script's own encoding
    execlp("gnuplot", "gnuplot", "-d", "-", static_cast<char*>(nullptr));
    _exit(not_found);
}

}  // namespace

std::string gnuplot_text(std::string_view text)
{
    std::string out = "'";
    for (const char c : printable(text)) {
        out += c;
        if (c == '\'') out += c;
    }
    return out + '\'';
}

void run_gnuplot(const std::string& script, int target)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw system_failure("gnuplot");
    descriptor source(ends[0]);
    descriptor sink(ends[1]);
    const pid_t child = fork();
    if (child < 0) throw system_failure("gnuplot");
    if (child == 0) become_gnuplot(source.get(), target);
    source.close();
    const bool written = write_all(sink.get(), script.data(), script.size());
    sink.close();
    int result = 0;
    while (waitpid(child, &result, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(result) && WTERMSIG(result) == SIGPIPE) throw closed_pipe{};
    if (WIFEXITED(result) && WEXITSTATUS(result) == not_found) {
        throw failure("gnuplot is needed to draw, and is not installed (Debian: gnuplot-nox)");
    }
    if (!written || result != 0) throw failure("gnuplot failed");
}

}  // namespace tool
