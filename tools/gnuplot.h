#pragma once

#include <string>
#include <string_view>

namespace tool {

/// A text as gnuplot takes it for just what it is.
std::string gnuplot_text(std::string_view text);

/// Runs a script in gnuplot, which writes to the descriptor. Throws a failure if there is no
/// gnuplot, or if it fails.
void run_gnuplot(const std::string& script, int target);

}  // namespace tool
