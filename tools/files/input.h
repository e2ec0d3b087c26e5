#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "core/descriptor.h"

namespace tool {

using tdms_impl::descriptor;

/// A file to read, as the command line names it. Reading needs random access, so a pipe, or
/// standard input, which is named "-", is first copied to a temporary file without a name.
class input {
  public:
    /// Throws a failure if there is no such file.
    explicit input(const std::string& name);

    /// Opens this same file even if its name has been reused.
    const std::string& path() const { return path_; }
    int file() const { return file_.get(); }

    /// Whether this is a temporary copy, which no recorder adds to.
    bool is_copy() const { return is_copy_; }

    /// Whether the name still refers to this file.
    bool is_in_place() const { return is_same(name_); }

    /// The current size; the file may be growing.
    std::uint64_t size() const;

    /// Throws a usage_error if the file to write is this one.
    void reject_as_target(const std::string& target) const;

  private:
    bool is_same(const std::string& name) const;

    struct stat source_ {};
    std::string name_;
    bool is_copy_ = false;
    std::string path_;
    descriptor file_;
};

/// The folder for temporary files: TMPDIR, or /tmp.
std::string temporary_directory();

/// Reads at most `count` bytes. @return how many; 0 at the end. Throws a failure about `what`.
std::size_t read_some(int file, char* bytes, std::size_t count, const std::string& what);

}  // namespace tool
