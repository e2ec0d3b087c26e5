#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// Something is wrong with a file, or with what is done with it; reported with the file's name.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The command line asks for something that cannot be meant.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A system call's failure by errno: "what: No such file or directory".
failure system_failure(const std::string& what);

/// Prints a line on standard error, after the tool's name.
void report(const std::string& about, const std::string& message);

/// Whether anything has been reported.
bool any_reported();

}  // namespace tool
