#include "console/output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "console/report.h"

namespace tool {

terminal_size size_of_terminal(int descriptor, terminal_size fallback)
{
    winsize size{};
    const bool known = isatty(descriptor) != 0 && ioctl(descriptor, TIOCGWINSZ, &size) == 0 &&
                       size.ws_col != 0 && size.ws_row != 0;
    return known ? terminal_size{size.ws_col, size.ws_row} : fallback;
}

bool write_to(int descriptor, const char* bytes, std::size_t count)
{
    while (count != 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

void write_standard_output(std::string_view bytes)
{
    if (write_to(STDOUT_FILENO, bytes.data(), bytes.size())) return;
    if (errno == EPIPE) throw closed_pipe{};
    throw output_failure(system_failure("standard output").what());
}

void output::put(std::string_view text)
{
    while (!text.empty()) {
        char* const p = room(1);
        const std::size_t part = text.copy(p, capacity - used_);
        keep(p + part);
        text.remove_prefix(part);
    }
}

void output::flush()
{
    const std::size_t count = std::exchange(used_, 0);
    if (count != 0) to_({buffer_.get(), count});
}

}  // namespace tool
