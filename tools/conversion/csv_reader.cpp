#include "conversion/csv_reader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "console/report.h"
#include "console/text.h"

namespace tool {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

std::size_t read_at(int file, char* bytes, std::size_t count, std::uint64_t offset)
{
    for (;;) {
        const ssize_t got = pread(file, bytes, count, static_cast<off_t>(offset));
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) throw system_failure("reading");
    }
}

// Lines end with LF, CR LF or CR.
bool is_end_of_line(char c)
{
    return c == '\n' || c == '\r';
}

std::uint64_t lines_in(std::string_view text)
{
    std::uint64_t lines = 0;
    char before = 0;
    for (const char c : text) {
        lines += c == '\r' || (c == '\n' && before != '\r') ? 1 : 0;
        before = c;
    }
    return lines;
}

}  // namespace

csv_reader::csv_reader(int file, std::uint64_t size) : file_(file), size_(size), buffer_(1 << 18)
{
    rewind();
    const char* const end = end_of_buffer();
    if (std::find<const char*>(buffer_.data() + begin_, end, '\0') != end) {
        throw failure("not a CSV file: it has zero bytes");
    }
    separator_ = find_separator();
    rewind();
}

void csv_reader::rewind()
{
    begin_ = end_ = 0;
    offset_ = 0;
    next_line_ = 1;
    fill();
    if (std::string_view(buffer_.data(), end_).starts_with(byte_order_mark)) {
        begin_ = byte_order_mark.size();
    }
}

// Names and values may contain the other candidates, but only the separator is likely to be in both
// lines.
char csv_reader::find_separator()
{
    char best = ',';
    std::size_t most = 1;
    std::vector<csv_field> record;
    for (const char candidate : {',', ';', '\t'}) {
        separator_ = candidate;
        rewind();
        try {
            if (!next(record)) break;
            const std::size_t names = record.size();
            const std::size_t fields = next(record) ? std::min(names, record.size()) : 1;
            if (fields > most) {
                most = fields;
                best = candidate;
            }
        } catch (const failure&) {
            continue;  // with this separator the quotes are wrong
        }
    }
    return best;
}

bool csv_reader::next(std::vector<csv_field>& record)
{
    line_ = next_line_;
    while (!split(record)) {
        if (!fill()) return false;
    }
    for (csv_field& field : record) {
        if (field.quoted) remove_doubled_quotes(field);
    }
    return true;
}

void csv_reader::fail(const std::string& message) const
{
    throw failure("line " + with_commas(line_) + ": " + message);
}

// Reads more after what is not yet split. @return false at the end of the file
bool csv_reader::fill()
{
    if (at_end()) return false;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= begin_;
    begin_ = 0;
    if (end_ == buffer_.size()) {
        if (end_ >= longest_record) fail("longer than 16 MiB; perhaps a quote is not closed");
        buffer_.resize(2 * end_);
    }
    const std::uint64_t wanted = std::min<std::uint64_t>(buffer_.size() - end_, size_ - offset_);
    const std::size_t got = read_at(file_, buffer_.data() + end_, wanted, offset_);
    end_ += got;
    offset_ += got;
    if (got == 0) size_ = offset_;  // the file was truncated meanwhile
    return true;
}

// Splits the next record in the buffer. @return false if its end is not in the buffer
bool csv_reader::split(std::vector<csv_field>& record)
{
    record.clear();
    const char* p = buffer_.data() + begin_;
    const char* const end = end_of_buffer();
    if (p == end) return false;
    for (bool more = true; more;) {
        csv_field field;
        p = p != end && *p == '"' ? after_quoted(p, field) : after_plain(p, field);
        if (p == nullptr) return false;
        record.push_back(field);
        more = p != end && *p == separator_;
        if (p != end && p + 1 != end && p[0] == '\r' && p[1] == '\n') ++p;
        if (p != end) ++p;
    }
    const char* const begin = buffer_.data() + begin_;
    next_line_ += lines_in({begin, p});
    begin_ += static_cast<std::size_t>(p - begin);
    return true;
}

// Takes a field. @return the separator or the end of line after it; null if that is not in the
// buffer
const char* csv_reader::after_quoted(const char* p, csv_field& field) const
{
    const char* const end = end_of_buffer();
    const char* const begin = ++p;
    for (;; p += 2) {
        p = static_cast<const char*>(std::memchr(p, '"', static_cast<std::size_t>(end - p)));
        if (p == nullptr && at_end()) fail("a quote is not closed");
        if (p == nullptr || (end - p < 3 && !at_end())) return nullptr;
        if (p + 1 == end || p[1] != '"') break;
    }
    field = {{begin, p}, true};
    ++p;
    if (p != end && *p != separator_ && !is_end_of_line(*p)) fail("text after a closing quote");
    return p;
}

const char* csv_reader::after_plain(const char* p, csv_field& field) const
{
    const char* const end = end_of_buffer();
    const char* const begin = p;
    while (p != end && *p != separator_ && !is_end_of_line(*p)) ++p;
    // A CR may be followed by an LF.
    if (end - p < 2 && !at_end()) return nullptr;
    field = {{begin, p}, false};
    return p;
}

void csv_reader::remove_doubled_quotes(csv_field& field)
{
    const std::size_t first = field.text.find('"');
    if (first == std::string_view::npos) return;
    char* const begin = buffer_.data() + (field.text.data() - buffer_.data());
    char* to = begin + first;
    for (std::size_t i = first; i != field.text.size(); ++i) {
        *to++ = field.text[i];
        if (field.text[i] == '"') ++i;
    }
    field.text = {begin, to};
}

}  // namespace tool
