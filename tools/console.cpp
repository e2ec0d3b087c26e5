#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace tool {
namespace {

bool reported = false;

// The length of the character at the front of a text in UTF-8; 0 if there is none to be shown.
std::size_t character_length(std::string_view text)
{
    constexpr std::array<std::uint32_t, 5> first_shown{0, 0x20, 0xA0, 0x800, 0x10000};
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if ((byte(0) >= 0x80 && byte(0) < 0xC0) || byte(0) > 0xF4) return 0;
    const std::size_t length = byte(0) < 0x80 ? 1 : byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
    if (length > text.size()) return 0;
    std::uint32_t code = length == 1 ? byte(0) : byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i != length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
        code = code << 6 | (byte(i) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool shown = code >= first_shown[length] && code != 0x7F && code <= 0x10FFFF;
    return shown && !surrogate ? length : 0;
}

std::string escape_of(char c)
{
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') return "\\n";
    return {'\\', 'x', digits[byte / 16], digits[byte % 16]};
}

}  // namespace

failure system_failure(const std::string& what)
{
    const std::string reason = std::strerror(errno);
    return failure{what + ": " + reason};
}

void report(const std::string& about, const std::string& message)
{
    const std::string line =
        "tdms: " + (about.empty() ? "" : printable(about) + ": ") + message + "\n";
    reported = true;
    static_cast<void>(write_all(STDERR_FILENO, line.data(), line.size()));
}

bool any_reported()
{
    return reported;
}

std::string printable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0) out += escape_of(text[0]);
        out += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

std::string in_quotes(std::string_view text)
{
    std::string marked;
    for (const char c : text) {
        if (c == '"' || c == '\\') marked += '\\';
        marked += c;
    }
    return '"' + printable(marked) + '"';
}

std::string count_of(std::uint64_t count, std::string_view what)
{
    return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

std::size_t width_of(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::string padded(std::string text, std::size_t width)
{
    const std::size_t taken = width_of(text);
    if (taken < width) text.append(width - taken, ' ');
    return text;
}

terminal_size size_of_terminal(int descriptor, terminal_size fallback)
{
    winsize size{};
    const bool known = isatty(descriptor) != 0 && ioctl(descriptor, TIOCGWINSZ, &size) == 0 &&
                       size.ws_col != 0 && size.ws_row != 0;
    return known ? terminal_size{size.ws_col, size.ws_row} : fallback;
}

bool write_all(int descriptor, const char* bytes, std::size_t count)
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
    if (write_all(STDOUT_FILENO, buffer_.get(), count)) return;
    if (errno == EPIPE) throw closed_pipe{};
    throw output_failure(system_failure("standard output").what());
}

progress::progress(std::string what, std::uint64_t total)
    : what_(std::move(what)),
      total_(total),
      terminal_(isatty(STDERR_FILENO) != 0),
      next_(std::chrono::steady_clock::now() + std::chrono::seconds(1))
{
}

progress::~progress()
{
    if (shown_) static_cast<void>(write_all(STDERR_FILENO, "\r\033[K", 4));
}

void progress::at(std::uint64_t done)
{
    if (!terminal_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    const double share = total_ == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total_);
    const std::string line =
        '\r' + what_ + ' ' + std::to_string(static_cast<int>(100 * share)) + " %\033[K";
    static_cast<void>(write_all(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace tool
