#include "plotting/gnuplot.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

#include "console/output.h"
#include "console/report.h"
#include "console/text.h"
#include "plotting/child_process.h"

namespace tool {
namespace {

constexpr int not_found = 127;

// @return the status of a process that could not become gnuplot
int become_gnuplot(int source, int target)
{
    dup2(source, STDIN_FILENO);
    dup2(target, STDOUT_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    setenv("LC_ALL", "C.UTF-8", 1);  // the script's own encoding
    execlp("gnuplot", "gnuplot", "-d", "-", static_cast<char*>(nullptr));
    return not_found;
}

// A file in memory, from whose beginning the text can be read.
descriptor file_of(const std::string& text)
{
    descriptor file(memfd_create("script", MFD_CLOEXEC));
    if (file.get() < 0 || !write_all(file.get(), text.data(), text.size()) ||
        lseek(file.get(), 0, SEEK_SET) != 0) {
        throw system_failure("gnuplot");
    }
    return file;
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

// gnuplot does not report write errors, so we write its output.
void run_gnuplot(const std::string& script, const std::function<void(std::string_view)>& take)
{
    const descriptor source = file_of(script);
    child_process gnuplot("gnuplot",
                          [&](int target) { return become_gnuplot(source.get(), target); });
    std::array<char, 65536> bytes;
    while (const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), gnuplot.output())) {
        take({bytes.data(), got});
    }
    const int status = gnuplot.wait();
    if (WIFEXITED(status) && WEXITSTATUS(status) == not_found) {
        throw failure("gnuplot is needed to draw, and cannot be run (Debian: gnuplot-nox)");
    }
    if (status != 0) throw failure("gnuplot failed");
}

}  // namespace tool
