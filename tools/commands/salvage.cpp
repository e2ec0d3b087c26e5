#include <unistd.h>

#include <algorithm>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "files/new_file.h"
#include "files/segments.h"

namespace tool {
namespace {

void copy_begin(const input& from, std::uint64_t size, new_file& to)
{
    progress shown("copying", size);
    std::vector<char> bytes(1 << 20);
    if (lseek(from.file(), 0, SEEK_SET) != 0) throw system_failure("reading");
    for (std::uint64_t done = 0; done != size; shown.at(done)) {
        const auto part = std::min<std::uint64_t>(bytes.size(), size - done);
        const std::size_t got = read_some(from.file(), bytes.data(), part, "reading");
        if (got == 0) throw failure("the file has become shorter");
        to.write({bytes.data(), got});
        done += got;
    }
}

}  // namespace

bool salvage(const salvage_options& wanted)
{
    const input from(wanted.file);
    from.reject_as_target(wanted.target);
    intact_part intact;
    {
        progress shown("checking", from.size());
        intact = walk_file(from, [&shown](const segment_facts& s) { shown.at(s.offset); });
    }
    if (intact.size == 0 && intact.file_size != 0) {
        throw failure("there is nothing to keep: " + intact.fault);
    }
    new_file to(wanted.target);
    copy_begin(from, intact.size, to);
    const tdms::file opens(to.path());
    to.commit();
    output out;
    out.put("kept: " + count_of(intact.segments, "segment") + ", " + count_of(intact.size, "byte") +
            ", " + count_of(intact.values, "value") + '\n');
    const std::uint64_t lost = intact.file_size - intact.size;
    out.put(lost == 0 ? "lost: nothing\n"
                      : "lost: " + count_of(lost, "byte") + " from offset " +
                            std::to_string(intact.size) + " on: " + intact.fault + '\n');
    out.flush();
    return true;
}

}  // namespace tool
