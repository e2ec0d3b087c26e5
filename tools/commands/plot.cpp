#include "commands/commands.h"

namespace tool {

bool plot(const plot_options&)
{
    throw failure("not yet");
}

}  // namespace tool
