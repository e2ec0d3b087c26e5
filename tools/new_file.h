#pragma once

#include <string>

#include "input.h"

namespace tool {

/// A file in the making, under a name beside its target's. It takes the target's place when it is
/// committed, and is gone without a trace if it never is.
class new_file {
  public:
    /// Throws a failure if nothing can be written beside the target, or something stands in its
    /// place that is not a file.
    explicit new_file(const std::string& target);
    ~new_file();
    new_file(const new_file&) = delete;
    new_file& operator=(const new_file&) = delete;

    int file() const { return file_.get(); }
    const std::string& path() const { return path_; }

    void write(const char* bytes, std::size_t count);

    /// Throws a failure unless the file is on the disk and has its name.
    void commit();

  private:
    [[noreturn]] void cannot_be_written() const;

    std::string target_;
    std::string path_;
    descriptor file_;
};

}  // namespace tool
