#include "commands/commands.h"

namespace tool {

bool diff(const diff_options&)
{
    throw failure("not yet");
}

}  // namespace tool
