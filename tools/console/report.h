#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// Something is wrong with a file, or an operation on it failed; it is reported with the file's
/// name.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The command line is wrong.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The failure of a system call, by errno: "what: No such file or directory".
failure system_failure(const std::string& what);

/// Prints a line on standard error: the name of the tool, what the message is about, if anything,
/// and the message.
void report(const std::string& about, const std::string& message);

/// Whether anything has been reported.
bool any_reported();

}  // namespace tool
