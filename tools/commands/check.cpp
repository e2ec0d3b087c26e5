#include <algorithm>
#include <array>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "files/measurement_file.h"
#include "files/segments.h"

namespace tool {
namespace {

void put_row(output& out, const std::array<std::string, 8>& fields, std::string_view state)
{
    constexpr std::array<std::size_t, 8> width{7, 14, 10, 14, 8, 11, 9, 12};
    std::string line;
    for (std::size_t i = 0; i != width.size(); ++i) {
        line += std::string(width[i] - std::min(width[i], fields[i].size()), ' ') + fields[i] + ' ';
    }
    out.put(line);
    out.put(' ');
    out.put(state);
    out.put('\n');
}

void put_segment(output& out, const segment_facts& s)
{
    const auto known = [&s](std::uint64_t number) {
        return s.metadata_length == 0 ? "-" : std::to_string(number);
    };
    put_row(out,
            {std::to_string(s.number), std::to_string(s.offset), known(s.metadata_length),
             known(s.raw_length), known(s.objects), known(s.properties), known(s.channels),
             known(s.values)},
            s.state);
}

// What the file states and does not hold, though its segments are intact.
void put_lost_values(output& out, const tdms::file& file)
{
    for (const selected_channel& c : all_channels(file)) {
        if (c.lost != 0) out.put(in_quotes(c.name()) + ": " + lost_values(c) + '\n');
    }
}

bool check_file(output& out, const std::string& name)
{
    const input from(name);
    out.put(printable(name) + '\n');
    put_row(out,
            {"segment", "offset", "metadata", "raw data", "objects", "properties", "channels",
             "values"},
            "state");
    intact_part intact;
    {
        progress shown("checking", from.size());
        intact = walk_file(from, [&](const segment_facts& s) {
            put_segment(out, s);
            shown.at(s.offset);
        });
    }
    out.put(count_of(intact.segments, "intact segment") + ", " + std::to_string(intact.size) +
            " of " + count_of(intact.file_size, "byte") + ", " + count_of(intact.values, "value") +
            '\n');
    try {
        out.flush();
    } catch (const closed_pipe&) {
        if (!intact.fault.empty()) report(name, intact.fault);
        throw;
    }
    if (!intact.fault.empty()) throw failure(intact.fault);
    try {
        put_lost_values(out, tdms::file(from.path()));
    } catch (const tdms::error&) {
        // A segment that is being written now is not yet a fault.
        if (from.size() == intact.file_size) throw;
        out.put("the file has been written to since; what was added is not checked\n");
    }
    out.flush();
    return true;
}

}  // namespace

bool check(const check_options& wanted)
{
    output out;
    bool first = true;
    return for_each_file(wanted.files, [&](const std::string& name) {
        if (!first) out.put('\n');
        first = false;
        return check_file(out, name);
    });
}

}  // namespace tool
