#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

namespace tdms_impl {

/// The bytes of a file by their offset, through one buffer that moves forward over the file. It
/// reads far ahead while the requests follow each other closely. After a long skip, it reads as
/// much as was used after the skip before: where values lie between the metadata of a recording's
/// saves, that is one read for each save, of nothing but metadata.
class file_window {
  public:
    /// The descriptor is used, not owned; its position stays as it is. No byte at or after `size`
    /// is ever read.
    file_window(int file, std::uint64_t size);

    /// `count` bytes at `offset`, valid until the next call; null if they cannot be read.
    unsigned char* view(std::uint64_t offset, std::uint64_t count)
    {
        if (!contains(offset, count) && !fill(offset, count)) return nullptr;
        use(offset, count);
        return buffer_.get() + (offset - begin_);
    }

    /// Copies `count` bytes at `offset` to `target`.
    /// @return whether all of them could be read; if not, `target` may hold some of them
    bool read(std::uint64_t offset, std::uint64_t count, unsigned char* target);

    /// Whether a read failed; a file that ends too early does not count.
    bool device_failed() const { return device_failed_; }

    /// Whether the file, at its current size, reaches to `end`.
    bool covers(std::uint64_t end) const;

  private:
    bool contains(std::uint64_t offset, std::uint64_t count) const
    {
        return offset >= begin_ && offset - begin_ <= filled_ &&
               count <= filled_ - (offset - begin_);
    }

    bool follows(std::uint64_t offset) const;
    void skip_to(std::uint64_t offset);
    void use(std::uint64_t offset, std::uint64_t count)
    {
        used_ = std::max(used_, offset + count - stretch_);
        largest_ = std::max(largest_, count);
    }
    bool fill(std::uint64_t offset, std::uint64_t count);
    std::uint64_t read_file(std::uint64_t offset, std::uint64_t count, unsigned char* target);

    int file_;
    std::uint64_t size_;
    std::unique_ptr<unsigned char[]> buffer_;
    std::uint64_t capacity_ = 0;
    std::uint64_t begin_ = 0;    // offset of the first byte in the buffer
    std::uint64_t filled_ = 0;   // bytes in the buffer
    std::uint64_t ahead_;        // how much to read at least
    std::uint64_t stretch_ = 0;  // where the latest long skip led to
    std::uint64_t used_ = 0;     // how far the requests since then have reached from there
    std::uint64_t largest_ = 0;  // of them
    bool device_failed_ = false;
};

/// The size that a file has now; less than 0, with errno, if the system does not know.
std::int64_t size_of_file(int file);

}  // namespace tdms_impl
