#include "console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "console/output.h"

namespace tool {
namespace {

constexpr unsigned narrowest = 50;  // without the bar
constexpr std::size_t bar_width = 20;

std::string bar(double share)
{
    const auto full = static_cast<std::size_t>(share * bar_width);
    return '[' + std::string(full, '#') + std::string(bar_width - full, ' ') + ']';
}

std::string time_text(double seconds)
{
    const auto total = static_cast<std::uint64_t>(std::lround(std::min(seconds, 359999.0)));
    std::string text = total < 3600 ? "" : std::to_string(total / 3600) + ':';
    for (const std::uint64_t part : {total / 60 % 60, total % 60}) {
        text += static_cast<char>('0' + part / 10);
        text += static_cast<char>('0' + part % 10);
        text += ':';
    }
    text.pop_back();
    return text;
}

}  // namespace

progress::progress(std::string what, std::uint64_t total)
    : what_(std::move(what)),
      total_(total),
      terminal_(isatty(STDERR_FILENO) != 0),
      begin_(clock::now()),
      next_(begin_ + std::chrono::seconds(1))
{
}

progress::~progress()
{
    if (shown_) static_cast<void>(write_to(STDERR_FILENO, "\r\033[K", 4));
}

void progress::at(std::uint64_t done)
{
    done_ = done;
    if (!terminal_) return;
    const auto now = clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    const auto bytes = static_cast<double>(done);
    const double share = total_ == 0 ? 1 : std::min(1.0, bytes / static_cast<double>(total_));
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const unsigned columns = size_of_terminal(STDERR_FILENO, {80, 25}).columns;
    std::string line = what_ + ' ' + (columns < narrowest + bar_width ? "" : bar(share) + ' ') +
                       std::to_string(static_cast<int>(100 * share)) + " %, " +
                       std::to_string(static_cast<std::uint64_t>(1e-6 * bytes / seconds)) + " MB/s";
    if (share > 0) line += ", " + time_text(seconds / share - seconds) + " left";
    // A wrapped line could not be overwritten.
    line = '\r' + line.substr(0, columns - 1) + "\033[K";
    static_cast<void>(write_to(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace tool
