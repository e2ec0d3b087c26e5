#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tool {

/// Quotes a string so gnuplot takes it literally.
std::string gnuplot_text(std::string_view text);

/// A number that gnuplot takes as floating point: its integers have 64 bits and may overflow.
std::string gnuplot_number(double value);

/// Runs a script in gnuplot, and passes its output to `take`. Throws a failure if there is no
/// gnuplot, or if it fails.
void run_gnuplot(const std::string& script, const std::function<void(std::string_view)>& take);

}  // namespace tool
