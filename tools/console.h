#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

/// Something is wrong with a file, or with what is done with it; reported with the file's name.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The command line asks for something that cannot be meant.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Nobody reads the output any more.
struct closed_pipe {};

/// Standard output cannot be written; it is about no file.
struct output_failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A system call's failure by errno: "what: No such file or directory".
failure system_failure(const std::string& what);

/// Prints a line on standard error, after the tool's name.
void report(const std::string& about, const std::string& message);

/// Whether anything has been reported.
bool any_reported();

/// Text from a file as it can be shown on one line of a terminal: control characters and bytes that
/// are not UTF-8 become escapes.
std::string printable(std::string_view text);
std::string in_quotes(std::string_view text);

/// A number of things, in words: "1 group", "2 groups".
std::string count_of(std::uint64_t count, std::string_view what);

/// How many characters a text takes on a terminal, and the text with blanks up to a width.
std::size_t width_of(std::string_view text);
std::string padded(std::string text, std::size_t width);

struct terminal_size {
    unsigned columns;
    unsigned rows;
};

/// The size of the terminal at a descriptor; the fallback if there is none.
terminal_size size_of_terminal(int descriptor, terminal_size fallback);

/// Writes all bytes to a descriptor. @return whether it could; if not, errno is the reason
bool write_all(int descriptor, const char* bytes, std::size_t count);

/// Standard output, through one large buffer. Only what flush() has seen is known to be written.
class output {
  public:
    /// At least `count` bytes of room, of which those up to `end` in keep(end) are output.
    char* room(std::size_t count)
    {
        if (capacity - used_ < count) flush();
        return buffer_.get() + used_;
    }
    void keep(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    void put(char c)
    {
        char* const p = room(1);
        *p = c;
        keep(p + 1);
    }
    void put(std::string_view text);
    void flush();

  private:
    static constexpr std::size_t capacity = 1 << 18;
    std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(capacity);
    std::size_t used_ = 0;
};

/// How far long work has come, on standard error if that is a terminal, from the first second on.
class progress {
  public:
    progress(std::string what, std::uint64_t total);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    void at(std::uint64_t done);

  private:
    std::string what_;
    std::uint64_t total_;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace tool
