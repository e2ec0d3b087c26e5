#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct csv_field {
    std::string_view text;
    bool quoted = false;

    /// Without quotes, nothing between two separators is a missing value; with quotes it is an
    /// empty string.
    bool is_missing() const { return text.empty() && !quoted; }
};

/// Reads CSV record by record, so memory depends only on the longest record.
class csv_reader {
  public:
    /// Reads the first `size` bytes of a file, which may be growing. The separator is the comma,
    /// the semicolon or the tab, whichever the first two lines have most of.
    csv_reader(int file, std::uint64_t size);

    char separator() const { return separator_; }

    /// Goes back to the first record.
    void rewind();

    /// Reads the next record; its fields are valid until the next call. Throws a failure, with the
    /// line, if quotes are wrong.
    /// @return false at the end
    bool next(std::vector<csv_field>& record);

    /// The line on which the last record begins, and the number of bytes up to its end.
    std::uint64_t line() const { return line_; }
    std::uint64_t position() const { return offset_ - (end_ - begin_); }

    /// Throws a failure about that line.
    [[noreturn]] void fail(const std::string& message) const;

  private:
    static constexpr std::size_t longest_record = 16 << 20;

    char find_separator();
    bool fill();
    bool split(std::vector<csv_field>& record);
    const char* after_quoted(const char* p, csv_field& field) const;
    const char* after_plain(const char* p, csv_field& field) const;
    void remove_doubled_quotes(csv_field& field);
    bool at_end() const { return offset_ == size_; }
    const char* end_of_buffer() const { return buffer_.data() + end_; }

    int file_;
    std::uint64_t size_;
    char separator_ = ',';
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  // of what is in the buffer and not yet split
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0;  // in the file, of what is read next
    std::uint64_t line_ = 0;
    std::uint64_t next_line_ = 1;
};

}  // namespace tool
