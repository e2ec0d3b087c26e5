#include <algorithm>
#include <array>

#include "commands.h"
#include "measurement_file.h"
#include "segments.h"

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

// Channels whose values the library does not find in a file that is sound as such.
void put_unreadable_channels(output& out, const measurement_file& file)
{
    const std::vector<selected_channel> channels = select(file, {});
    progress shown("looking for the channels' values", channels.size());
    std::uint64_t done = 0;
    for (const auto& [owner, c] : channels) {
        shown.at(done++);
        if (c->count == 0) continue;
        try {
            locate(*c);
        } catch (const failure& e) {
            out.put("not readable: " + in_quotes(c->name) + ": " + e.what() + '\n');
        }
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
    sound_part sound;
    {
        progress shown("checking", from.size());
        sound = walk_file(from, [&](const segment_facts& s) {
            put_segment(out, s);
            shown.at(s.offset);
        });
    }
    out.put(count_of(sound.segments, "whole segment") + ", " + std::to_string(sound.size) + " of " +
            count_of(sound.file_size, "byte") + ", " + count_of(sound.values, "value") + '\n');
    try {
        out.flush();
    } catch (const closed_pipe&) {
        if (!sound.fault.empty()) report(name, sound.fault);
        throw;
    }
    if (!sound.fault.empty()) throw failure(sound.fault);
    try {
        const measurement_file file(from);
        if (!sound.regular) put_unreadable_channels(out, file);
    } catch (const failure&) {
        // A segment that is being written now is not yet a fault.
        if (from.size() == sound.file_size) throw;
        out.put("the file has been written to since; what came later is not checked\n");
    }
    out.flush();
    return true;
}

}  // namespace

bool check(const std::vector<std::string>& files)
{
    output out;
    bool first = true;
    return for_each_file(files, [&](const std::string& name) {
        if (!first) out.put('\n');
        first = false;
        return check_file(out, name);
    });
}

}  // namespace tool
