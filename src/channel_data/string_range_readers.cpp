// The functions that read a range of a channel's strings.

#include "channel_data/value_range.h"
#include "codec/string_terminator.h"
#include "core/guarded.h"

namespace tdms_impl {
namespace {

// A part of one block of strings: the ends that its table states, and where the strings begin.
class string_part {
  public:
    string_part(file_window& window, const block_run& run, std::uint64_t block, std::uint64_t first,
                std::uint64_t count)
        : window_(window),
          table_(block + 4 * first),
          strings_(block + 4 * run.values),
          strings_size_(run.size - 4 * run.values),
          first_(first),
          count_(count)
    {
    }

    /// Finds where the first string begins and the last one ends. @return whether that is possible
    bool find_ends()
    {
        const auto end_at = [this](std::uint64_t offset, std::uint64_t& end) {
            const unsigned char* const stored = window_.view(offset, 4);
            if (stored != nullptr) end = load<std::uint32_t>(stored, true);
            return stored != nullptr;
        };
        if (first_ != 0 && !end_at(table_ - 4, begin_)) return false;
        return end_at(table_ + 4 * (count_ - 1), end_) && begin_ <= end_ && end_ <= strings_size_;
    }

    std::uint64_t offset() const { return strings_ + begin_; }
    std::uint64_t size() const { return end_ - begin_; }

    /// Calls `use(length)` for each string. @return whether the ends in the table ascend to that of
    /// the last string
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
    std::uint64_t strings_;
    std::uint64_t strings_size_;
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

// How many bytes a range of strings takes with a NUL each, and where it ends in the file.
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
        range.size += part.size();
        range.end = part.offset() + part.size();
        return true;
    });
}

// Reads strings into a buffer of `size` bytes. The bytes of a block are read to the end of their
// place in the buffer, then moved to the front string by string.
int read_strings(const stored_values& values, std::uint64_t first, std::uint64_t count,
                 char* buffer, std::uint64_t size, const char** texts)
{
    file_window tables(values.file, values.file_size);
    file_window bytes(values.file, values.file_size);
    auto* front = reinterpret_cast<unsigned char*>(buffer);
    std::uint64_t room = size - count;  // for other bytes than a NUL for each string
    const auto read_part = [&](string_part& part, std::uint64_t strings) {
        // The file may have changed since its size was determined.
        if (part.size() > room) return false;
        room -= part.size();
        unsigned char* const target = front + strings;
        if (!bytes.read(part.offset(), part.size(), target)) return false;
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

// Whether the tables of the range are sound, and the file still reaches to its end. This is checked
// before anything is written.
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
