#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace tool {

/// An open file descriptor and its owner.
class descriptor {
  public:
    explicit descriptor(int number) : number_(number) {}
    ~descriptor();
    descriptor(descriptor&& other) noexcept : number_(other.release()) {}
    descriptor& operator=(descriptor&& other) noexcept
    {
        close();
        number_ = other.release();
        return *this;
    }

    int get() const { return number_; }
    int release()
    {
        const int number = number_;
        number_ = -1;
        return number;
    }
    void close();

  private:
    int number_;
};

/// A measurement file as the command line names it. Reading moves back and forth over a file, so
/// what comes through a pipe, or from standard input as "-", is copied to a temporary file that has
/// no name.
class input {
  public:
    /// Throws a failure if there is no such file.
    explicit input(const std::string& name);

    const std::string& name() const { return name_; }  ///< as the user knows it
    const std::string& path() const { return path_; }  ///< to open it by
    int file() const { return file_.get(); }
    std::uint64_t size() const { return size_; }

    /// A stream of its own on the file, for the caller to close; reading moves the file's position.
    std::FILE* stream() const;

  private:
    std::string name_;
    std::string path_;
    descriptor file_;
    std::uint64_t size_ = 0;
};

/// Reads up to `count` bytes, as many as there are; throws a failure about `what`.
std::size_t read_some(int file, char* bytes, std::size_t count, const std::string& what);

}  // namespace tool
