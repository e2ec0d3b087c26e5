#include "console/report.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "console/output.h"
#include "console/text.h"

namespace tool {
namespace {

bool reported = false;

}  // namespace

failure system_failure(const std::string& what)
{
    const std::string reason = std::strerror(errno);
    return failure{what + ": " + reason};
}

void report(const std::string& about, const std::string& message)
{
    const std::string line =
        "tdms: " + (about.empty() ? "" : printable(about) + ": ") + message + "\n";
    reported = true;
    static_cast<void>(write_to(STDERR_FILENO, line.data(), line.size()));
}

bool any_reported()
{
    return reported;
}

}  // namespace tool
