#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace tdms {

/// The bytes of a file by their offset, through one buffer that moves forward over the file. It
/// reads far ahead while the requests follow each other closely, and little after a long skip.
class file_window {
  public:
    /// The stream is used, not owned. No byte at or behind `size` is ever read.
    file_window(std::FILE* stream, std::uint64_t size) : stream_(stream), size_(size) {}

    /// `count` bytes at `offset`, valid until the next call; null if the file does not give them.
    unsigned char* view(std::uint64_t offset, std::uint64_t count);

    /// Copies `count` bytes at `offset` to `target`.
    /// @return whether all of them could be read; if not, `target` may hold a part
    bool read(std::uint64_t offset, std::uint64_t count, unsigned char* target);

    /// Whether the file, as it is now, reaches to `end`.
    bool covers(std::uint64_t end);

  private:
    bool contains(std::uint64_t offset, std::uint64_t count) const
    {
        return offset >= begin_ && offset - begin_ <= filled_ &&
               count <= filled_ - (offset - begin_);
    }

    void fill(std::uint64_t offset, std::uint64_t count);
    std::uint64_t read_stream(std::uint64_t offset, std::uint64_t count,
                              unsigned char* target) const;

    std::FILE* stream_;
    std::uint64_t size_;
    std::unique_ptr<unsigned char[]> buffer_;
    std::uint64_t capacity_ = 0;
    std::uint64_t begin_ = 0;   // offset of the first byte in the buffer
    std::uint64_t filled_ = 0;  // bytes in the buffer
};

/// The size of the file behind a stream, which is left at its end; less than 0 if it cannot be
/// told, as for a pipe.
std::int64_t stream_size(std::FILE* stream);

}  // namespace tdms
