#pragma once

#include <cstdint>
#include <cstdio>

namespace tdms_impl {

enum class open_mode { read, write, append };

/// A file that is being opened for a handle. If that fails, it is closed, and removed if it was
/// created for it; errno keeps the reason.
class file_being_opened {
  public:
    file_being_opened(const char* path, open_mode mode) : path_(path), mode_(mode) {}
    ~file_being_opened();
    file_being_opened(const file_being_opened&) = delete;
    file_being_opened& operator=(const file_being_opened&) = delete;

    /// Opens the file, and locks it if it is to be written to. Nothing in it changes.
    /// @return the size, or less than 0 with errno
    std::int64_t open();

    int file() const { return fileno(stream_); }

    /// Empties the file. @return whether that was possible; if not, errno
    bool truncate() const;

    /// Hands the stream over.
    std::FILE* release();

  private:
    int open_descriptor();
    bool lock(int file);

    const char* path_;
    open_mode mode_;
    std::FILE* stream_ = nullptr;
    bool created_ = false;
};

}  // namespace tdms_impl
