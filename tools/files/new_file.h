#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "files/input.h"

namespace tool {

/// A file in the making, under a name beside its target's. It takes the target's place when it is
/// committed, and is gone without a trace if it never is, also if a signal
/// ends the process, unless it is SIGKILL or reports a fault of the program.
class new_file {
  public:
    /// Throws a failure if nothing can be written beside the target, or something that is not a
    /// file is in its place. A target that is a symbolic link means what it points to.
    explicit new_file(const std::string& target);

    /// One that is never committed.
    static new_file temporary() { return new_file(); }

    ~new_file();
    new_file(const new_file&) = delete;
    new_file& operator=(const new_file&) = delete;

    const std::string& path() const { return path_; }

    void write(std::string_view bytes);

    /// Throws a failure unless the file is on the disk and has its name.
    void commit();

  private:
    new_file();
    void create(mode_t mode);
    [[noreturn]] void cannot_be_written() const;

    std::string target_;
    std::string path_;
    descriptor file_{-1};
};

}  // namespace tool
