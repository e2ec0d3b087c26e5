#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace tool {

/// Nobody reads the output any more.
struct closed_pipe {};

/// Standard output cannot be written. No file is to blame.
struct output_failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct terminal_size {
    unsigned columns;
    unsigned rows;
};

/// The size of the terminal that a descriptor refers to; the fallback if there is none.
terminal_size size_of_terminal(int descriptor, terminal_size fallback);

/// Writes all bytes to a descriptor. @return false if that failed, for the reason in errno
bool write_to(int descriptor, const char* bytes, std::size_t count);

/// Writes to standard output; throws closed_pipe or output_failure.
void write_standard_output(std::string_view bytes);

/// Output through one large buffer. What was put is certain to be written only after flush().
class output {
  public:
    using target = std::function<void(std::string_view bytes)>;

    /// @param to writes the bytes, or throws
    explicit output(target to = write_standard_output) : to_(std::move(to)) {}

    /// Returns room for at least `count` bytes; keep(end) outputs those before `end`.
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
    target to_;
    std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(capacity);
    std::size_t used_ = 0;
};

}  // namespace tool
