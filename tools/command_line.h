#pragma once

namespace tool {

/// Parses the command line and runs the command. Bad usage and the failures of files are reported;
/// other exceptions are thrown.
/// @return the exit status
int run_command_line(int argc, char** argv);

}  // namespace tool
