#include "commands/commands.h"

namespace tool {

bool convert(const convert_options&)
{
    throw failure("not yet");
}

}  // namespace tool
