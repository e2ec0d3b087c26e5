#pragma once

#include "commands/plot_source.h"

namespace tool {

/// Draws a file in the terminal again and again, as it grows, until the user interrupts it.
void follow_plot(const plot_options& wanted, plot_source& source);

}  // namespace tool
