#include "plotting/gnuplot.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <csignal>
#include <cstdlib>

#include "console/output.h"
#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"
#include "plotting/child_process.h"

namespace tool {
namespace {

constexpr int not_found = 127;

// Replaces this process by gnuplot. @return the exit status if that fails
int become_gnuplot(int source, int target)
{
    dup2(source, STDIN_FILENO);
    dup2(target, STDOUT_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    setenv("LC_ALL", "C.UTF-8", 1);  // the encoding of the script
    execlp("gnuplot", "gnuplot", "-d", "-", static_cast<char*>(nullptr));
    return not_found;
}

// A file in memory that holds the text, to be read from its beginning.
descriptor script_file(const std::string& text)
{
    descriptor file(memfd_create("script", MFD_CLOEXEC));
    if (file.get() < 0 || !write_to(file.get(), text.data(), text.size()) ||
        lseek(file.get(), 0, SEEK_SET) != 0) {
        throw system_failure("gnuplot");
    }
    return file;
}

}  // namespace

// Single quotes are not safe: gnuplot takes ''' for the end of an empty string. In double quotes,
// all but harmless characters are written as octal numbers. A digit after such a number is written
// as one, too, since it would be taken for a part of it.
std::string gnuplot_text(std::string_view text)
{
    std::string out = "\"";
    bool after_number = false;
    for (const char c : printable(text)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool harmless = std::isalnum(byte) != 0 || c == ' ' || byte >= 0x80;
        after_number = !harmless || (after_number && std::isdigit(byte) != 0);
        if (after_number) {
            out += '\\';
            for (const int shift : {6, 3, 0}) out += static_cast<char>('0' + (byte >> shift & 7));
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string gnuplot_number(double value)
{
    std::string text = text_of(value);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

// gnuplot does not report write errors, so we write its output.
void run_gnuplot(const std::string& script, const std::function<void(std::string_view)>& take)
{
    const descriptor source = script_file(script);
    child_process gnuplot("gnuplot",
                          [&](int target) { return become_gnuplot(source.get(), target); });
    std::array<char, 65536> bytes;
    while (const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), gnuplot.output())) {
        take({bytes.data(), got});
    }
    const int status = gnuplot.wait();
    if (WIFEXITED(status) && WEXITSTATUS(status) == not_found) {
        throw failure("gnuplot is needed to draw, but cannot be run (Debian: gnuplot-nox)");
    }
    if (status != 0) throw failure("gnuplot failed");
}

}  // namespace tool
