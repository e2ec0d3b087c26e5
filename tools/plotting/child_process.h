#pragma once

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "files/input.h"

namespace tool {

/// A child process whose output we read.
class child_process {
  public:
    /// Calls `work(output)` in the new process, with a descriptor for its output. `work` returns
    /// the exit status and must not throw: exceptions must not escape into the parent's code.
    /// Throws a failure about `what` if the process cannot be created.
    template <class Work>
    child_process(const std::string& what, Work work) : child_process(what)
    {
        if (number_ == 0) {
            output_.reset();  // otherwise it would not notice that the parent stops reading
            _exit(work(end_.get()));
        }
        end_.reset();
    }
    /// Stops reading, which ends a process that is still writing, and waits for the exit.
    ~child_process() { wait(); }
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    std::FILE* output() const { return output_.get(); }

    /// Stops reading, and waits for the exit. @return the status from waitpid(), or -1
    int wait();

  private:
    explicit child_process(const std::string& what);

    struct closer {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    descriptor end_;
    std::unique_ptr<std::FILE, closer> output_;
    pid_t number_ = -1;
};

}  // namespace tool
