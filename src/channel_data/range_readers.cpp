#include <algorithm>
#include <array>
#include <cstring>

#include "codec/element.h"
#include "codec/nanoseconds.h"
#include "codec/string_terminator.h"
#include "core/guarded.h"
#include "reader/stored_values.h"

namespace tdms_impl {
namespace {

constexpr std::size_t most_at_once = 65536;

// A range of a channel's stored values that is to be read.
class value_range {
  public:
    value_range(const stored_values& values, std::uint64_t first, std::uint64_t count)
        : values_(values), first_(first), count_(count), window_(values.file, values.file_size)
    {
    }

    /// Reads the stored bytes of the values, the last ones first, into memory of its own: if the
    /// file no longer holds them, the caller's array stays untouched. Checking the file's size
    /// would be one more system call.
    int read(std::uint32_t value_size, unsigned char* target)
    {
        std::array<unsigned char, most_apart> last;
        const last_values found = find_last();
        const std::uint64_t apart = std::min(found.in_block, last.size() / value_size);
        const std::uint64_t last_size = apart * value_size;
        const std::uint64_t end = found.block + found.end * value_size;
        if (!window_.read(end - last_size, last_size, last.data())) return TDMS_CHANNEL_DATA_READ;
        const auto read_part = [&](std::uint64_t offset, std::uint64_t size) {
            const bool got = window_.read(offset, size, target);
            target += size;
            return got ? TDMS_OK : TDMS_CHANNEL_DATA_READ;
        };
        if (const int status = for_each_part(count_ - apart, read_part, value_size)) return status;
        std::copy_n(last.data(), last_size, target);
        return TDMS_OK;
    }

    /// Calls `use(bytes, count)` for the stored bytes of some values after the other.
    template <class Use>
    int read_piecemeal(std::uint32_t value_size, Use use)
    {
        const last_values last = find_last();
        if (!window_.covers(last.block + last.end * value_size)) return TDMS_CHANNEL_DATA_READ;
        return for_each_part(
            count_,
            [&](std::uint64_t offset, std::uint64_t size) -> int {
                while (size != 0) {
                    const std::uint64_t part = std::min<std::uint64_t>(size, most_at_once);
                    const unsigned char* const bytes = window_.view(offset, part);
                    if (bytes == nullptr) return TDMS_CHANNEL_DATA_READ;
                    use(bytes, part / value_size);
                    offset += part;
                    size -= part;
                }
                return TDMS_OK;
            },
            value_size);
    }

  private:
    static constexpr std::size_t most_apart = 8192;

    // Where the range ends.
    struct last_values {
        std::uint64_t block;     // offset in the file
        std::uint64_t end;       // number of values from there to the end of the range
        std::uint64_t in_block;  // how many of them are in the range
    };

    last_values find_last() const
    {
        last_values found{};
        values_.channel->for_each_block(
            first_ + count_ - 1, 1,
            [&](const block_run&, std::uint64_t block, std::uint64_t skipped, std::uint64_t) {
                const std::uint64_t end = skipped + 1;
                found = {block, end, std::min(end, count_)};
                return TDMS_OK;
            });
        return found;
    }

    // Calls `use(offset, size)` for the stored bytes of the first `count` values, block by block.
    template <class Use>
    int for_each_part(std::uint64_t count, Use use, std::uint32_t value_size)
    {
        return values_.channel->for_each_block(
            first_, count,
            [&](const block_run&, std::uint64_t offset, std::uint64_t skipped, std::uint64_t part) {
                return use(offset + skipped * value_size, part * value_size);
            });
    }

    const stored_values& values_;
    std::uint64_t first_;
    std::uint64_t count_;
    file_window window_;
};

int check_range(const stored_values& values, std::uint64_t first, std::uint64_t count)
{
    const std::uint64_t there = values.count();
    return first > there || count > there - first ? TDMS_RANGE : TDMS_OK;
}

// Locates a range of a channel's values, which `is_type(type)` must accept, and reads it, if it is
// not empty, by `read(range, type)`.
template <class IsType, class Read>
int with_range(void* handle, std::uint64_t first, std::uint64_t count, const void* target,
               IsType is_type, Read read)
{
    return guarded<channel>(handle, [&](channel& c) -> int {
        if (target == nullptr && count != 0) return TDMS_ARGUMENT;
        stored_values values{};
        if (const int status = locate_values(c, values)) return status;
        if (values.data_type != 0 && !is_type(values.data_type)) return TDMS_CHANNEL_DATATYPE;
        if (const int status = check_range(values, first, count)) return status;
        if (count == 0) return TDMS_OK;
        value_range range(values, first, count);
        return read(range, values.data_type);
    });
}

// Turns stored values, which are at the end of the caller's array, into those wanted, from the
// front: no stored value is overwritten before it is read.
template <class Stored, class T>
void convert(T* values, std::uint64_t count)
{
    static_assert(sizeof(T) >= stored_size<Stored>);
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    const unsigned char* stored = bytes + (sizeof(T) - stored_size<Stored>)*count;
    for (std::uint64_t i = 0; i != count; ++i, stored += stored_size<Stored>) {
        const T value = static_cast<T>(load_element<Stored>(stored));
        std::memcpy(bytes + sizeof(T) * i, &value, sizeof value);
    }
}

// Reads into the end of the caller's array, since values may be wider in memory than in the file.
template <class Stored, class T>
int read_as(value_range& range, std::uint64_t count, T* values)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(values);
    unsigned char* const target = bytes + (sizeof(T) - stored_size<Stored>)*count;
    if (const int status = range.read(stored_size<Stored>, target)) return status;
    if constexpr (std::is_same_v<T, timestamp_fields>) {
        decode_timestamps(target, count, values);
    } else if constexpr (!std::is_same_v<Stored, T> || std::is_same_v<T, bool>) {
        convert<Stored>(values, count);
    }
    return TDMS_OK;
}

template <class T>
int read_values(void* handle, std::uint64_t first, std::uint64_t count, T* values)
{
    return with_range(
        handle, first, count, values, [](std::uint32_t type) { return type == type_code<T>; },
        [&](value_range& range, std::uint32_t) { return read_as<T>(range, count, values); });
}

// Reads stored numbers of any type as doubles.
int read_as_doubles(value_range& range, std::uint32_t type, std::uint64_t count, double* values)
{
    switch (type) {
#define TDMS_CASE(suffix, T, code) \
    case code:                     \
        return read_as<T>(range, count, values);
        TDMS_NUMBER_ELEMENTS(TDMS_CASE)
#undef TDMS_CASE
        default:
            return TDMS_CHANNEL_DATATYPE;
    }
}

// Every number is read as a double, too.
int read_values(void* handle, std::uint64_t first, std::uint64_t count, double* values)
{
    const auto is_number = [](std::uint32_t type) {
        return (type >= TDMS_TYPE_INT8 && type <= TDMS_TYPE_DOUBLE) || type == TDMS_TYPE_BOOL;
    };
    return with_range(handle, first, count, values, is_number,
                      [&](value_range& range, std::uint32_t type) {
                          return read_as_doubles(range, type, count, values);
                      });
}

// A part of one block of strings: the ends that its table states, and where the strings begin.
class string_part {
  public:
    string_part(file_window& window, const block_run& run, std::uint64_t block, std::uint64_t first,
                std::uint64_t count)
        : window_(window),
          table_(block + 4 * first),
          texts_(block + 4 * run.values),
          texts_size_(run.size - 4 * run.values),
          first_(first),
          count_(count)
    {
    }

    /// Finds the first string's begin and the last one's end. @return whether they can be
    bool find_ends()
    {
        const auto end_at = [this](std::uint64_t offset, std::uint64_t& end) {
            const unsigned char* const stored = window_.view(offset, 4);
            if (stored != nullptr) end = load<std::uint32_t>(stored, true);
            return stored != nullptr;
        };
        if (first_ != 0 && !end_at(table_ - 4, begin_)) return false;
        return end_at(table_ + 4 * (count_ - 1), end_) && begin_ <= end_ && end_ <= texts_size_;
    }

    std::uint64_t text_offset() const { return texts_ + begin_; }
    std::uint64_t text_size() const { return end_ - begin_; }

    /// Calls `use(length)` for each string. @return whether none ends before it begins, and they
    /// end where the last one does
    template <class Use>
    bool visit_lengths(Use use)
    {
        std::uint64_t begin = begin_;
        std::uint64_t offset = table_;
        for (std::uint64_t left = count_; left != 0;) {
            const std::uint64_t part = std::min<std::uint64_t>(left, most_at_once / 4);
            const unsigned char* const ends = window_.view(offset, 4 * part);
            if (ends == nullptr) return false;
            for (std::uint64_t i = 0; i != part; ++i) {
                const std::uint64_t end = load<std::uint32_t>(ends + 4 * i, true);
                if (end < begin || end > end_) return false;
                use(end - begin);
                begin = end;
            }
            offset += 4 * part;
            left -= part;
        }
        return begin == end_;
    }

  private:
    file_window& window_;
    std::uint64_t table_;  // offset of the first string's entry
    std::uint64_t texts_;
    std::uint64_t texts_size_;
    std::uint64_t first_;
    std::uint64_t count_;
    std::uint64_t begin_ = 0;  // counted from the beginning of the block's strings
    std::uint64_t end_ = 0;
};

// Calls `use(part)` for the part of each block of strings that a range reaches.
template <class Use>
int for_each_string_part(const stored_values& values, file_window& tables, std::uint64_t first,
                         std::uint64_t count, Use use)
{
    return values.channel->for_each_block(
        first, count,
        [&](const block_run& run, std::uint64_t block, std::uint64_t skipped, std::uint64_t part) {
            string_part strings(tables, run, block, skipped, part);
            return strings.find_ends() && use(strings) ? TDMS_OK : TDMS_CHANNEL_DATA_READ;
        });
}

// The bytes that a range of strings takes with a NUL each, and where they end in the file.
struct string_range {
    std::uint64_t size;
    std::uint64_t end;
};

// Locates a range of a channel's strings.
int locate_strings(channel& c, std::uint64_t first, std::uint64_t count, stored_values& values,
                   string_range& range)
{
    if (const int status = locate_values(c, values)) return status;
    if (values.data_type != 0 && values.data_type != TDMS_TYPE_STRING) return TDMS_CHANNEL_DATATYPE;
    if (const int status = check_range(values, first, count)) return status;
    range = {count, 0};
    if (count == 0) return TDMS_OK;
    file_window tables(values.file, values.file_size);
    return for_each_string_part(values, tables, first, count, [&range](const string_part& part) {
        range.size += part.text_size();
        range.end = part.text_offset() + part.text_size();
        return true;
    });
}

// Reads strings into a buffer of `size` bytes. The bytes of a block come first, to the end of where
// they will be, and move to the front string by string.
int read_strings(const stored_values& values, std::uint64_t first, std::uint64_t count,
                 char* buffer, std::uint64_t size, const char** texts)
{
    file_window tables(values.file, values.file_size);
    file_window bytes(values.file, values.file_size);
    auto* front = reinterpret_cast<unsigned char*>(buffer);
    std::uint64_t room = size - count;  // for other bytes than a NUL for each string
    const auto read_part = [&](string_part& part, std::uint64_t strings) {
        // The file may have changed since its size was found out.
        if (part.text_size() > room) return false;
        room -= part.text_size();
        unsigned char* const target = front + strings;
        if (!bytes.read(part.text_offset(), part.text_size(), target)) return false;
        string_terminator terminator(front, target);
        const bool sound =
            part.visit_lengths([&](std::uint64_t length) { *texts++ = terminator.move(length); });
        front = terminator.front();
        return sound;
    };
    return values.channel->for_each_block(
        first, count,
        [&](const block_run& run, std::uint64_t block, std::uint64_t skipped, std::uint64_t part) {
            string_part strings(tables, run, block, skipped, part);
            if (!strings.find_ends() || !read_part(strings, part)) return TDMS_CHANNEL_DATA_READ;
            *texts = reinterpret_cast<const char*>(front);
            return TDMS_OK;
        });
}

// Whether every string of the range is where its table says, and the file still reaches there;
// nothing is written before that.
int check_strings(const stored_values& values, std::uint64_t first, std::uint64_t count,
                  std::uint64_t end)
{
    file_window tables(values.file, values.file_size);
    if (!tables.covers(end)) return TDMS_CHANNEL_DATA_READ;
    return for_each_string_part(values, tables, first, count, [](string_part& part) {
        return part.visit_lengths([](std::uint64_t) {});
    });
}

}  // namespace
}  // namespace tdms_impl

#define TDMS_DEFINE_RANGE_READER(suffix, type, code)                                    \
    int tdms_read_##suffix(void* channel, uint64_t first, uint64_t count, type* values) \
    {                                                                                   \
        return tdms_impl::read_values(channel, first, count, values);                   \
    }
TDMS_FIXED_SIZE_ELEMENTS(TDMS_DEFINE_RANGE_READER)

int tdms_read_nanoseconds(void* channel, uint64_t first, uint64_t count, int64_t* values)
{
    return tdms_impl::with_range(
        channel, first, count, values,
        [](std::uint32_t type) { return type == TDMS_TYPE_TIMESTAMP; },
        [values](tdms_impl::value_range& range, std::uint32_t) {
            std::int64_t* next = values;
            return range.read_piecemeal(tdms_impl::timestamp_size,
                                        [&next](const unsigned char* bytes, std::uint64_t part) {
                                            tdms_impl::decode_nanoseconds(bytes, part, next);
                                            next += part;
                                        });
        });
}

int tdms_get_num_values(void* channel, uint64_t* count, uint64_t* lost)
{
    return tdms_impl::guarded<tdms_impl::channel>(channel, [&](tdms_impl::channel& c) {
        tdms_impl::stored_values values{};
        if (const int status = tdms_impl::locate_values(c, values)) return status;
        if (count != nullptr) *count = values.count();
        if (lost != nullptr) *lost = values.channel == nullptr ? 0 : values.channel->lost();
        return int{TDMS_OK};
    });
}

int tdms_get_string_size(void* channel, uint64_t first, uint64_t count, uint64_t* size)
{
    return tdms_impl::guarded<tdms_impl::channel>(channel, [&](tdms_impl::channel& c) -> int {
        if (size == nullptr) return TDMS_ARGUMENT;
        tdms_impl::stored_values values{};
        tdms_impl::string_range range{};
        if (const int status = tdms_impl::locate_strings(c, first, count, values, range))
            return status;
        *size = range.size;
        return TDMS_OK;
    });
}

int tdms_read_string(void* channel, uint64_t first, uint64_t count, char* buffer, uint64_t size,
                     const char** texts)
{
    return tdms_impl::guarded<tdms_impl::channel>(channel, [&](tdms_impl::channel& c) -> int {
        if (texts == nullptr || (buffer == nullptr && size != 0)) return TDMS_ARGUMENT;
        tdms_impl::stored_values values{};
        tdms_impl::string_range range{};
        if (const int status = tdms_impl::locate_strings(c, first, count, values, range))
            return status;
        if (size < range.size) return TDMS_PROPERTY_BUFFER;
        if (count == 0) {
            *texts = buffer;
            return TDMS_OK;
        }
        if (const int status = tdms_impl::check_strings(values, first, count, range.end))
            return status;
        return tdms_impl::read_strings(values, first, count, buffer, range.size, texts);
    });
}
