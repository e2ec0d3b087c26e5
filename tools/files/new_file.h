#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "files/input.h"

namespace tool {

/// A file that is being written, under a temporary name beside its target. It replaces the target
/// when it is committed. Otherwise it is removed, also if a signal ends the process, unless that is
/// SIGKILL or reports a fault of the program.
class new_file {
  public:
    /// Throws a failure if nothing can be written beside the target, or if the target exists and is
    /// not a regular file. A target that is a symbolic link means the file that it points to.
    explicit new_file(const std::string& target);

    /// A file that is not to be committed.
    static new_file temporary() { return {}; }

    ~new_file();
    new_file(const new_file&) = delete;
    new_file& operator=(const new_file&) = delete;

    const std::string& path() const { return path_; }

    void write(std::string_view bytes);

    /// Syncs the file to the disk and gives it its name, or throws a failure.
    void commit();

  private:
    new_file();
    void create(mode_t mode);
    [[noreturn]] void cannot_be_written() const;

    std::string target_;
    std::string path_;
    descriptor file_;
};

}  // namespace tool
