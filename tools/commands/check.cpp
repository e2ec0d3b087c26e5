#include <algorithm>
#include <array>
#include <optional>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "files/measurement_file.h"
#include "files/piece_reader.h"
#include "files/segments.h"

namespace tool {
namespace {

// A table of segments, in which consecutive ones that are alike share a line.
class segment_table {
  public:
    explicit segment_table(output& out) : out_(out)
    {
        put_line({"segments", "offset", "metadata", "raw data", "objects", "properties", "channels",
                  "values", "all values"},
                 "state");
    }

    void add(const segment_facts& s)
    {
        if (!last_ || !are_alike(*last_, s)) {
            put_run();
            first_ = s;
        }
        last_ = s;
    }

    /// Completes the table.
    void put_run()
    {
        if (!last_) return;
        const segment_facts& s = *last_;
        const auto known = [&s](std::uint64_t number) {
            return s.metadata_length == 0 ? "-" : std::to_string(number);
        };
        std::string numbers = std::to_string(first_.number);
        if (s.number != first_.number) numbers.append("-").append(std::to_string(s.number));
        const std::uint64_t count = s.number - first_.number + 1;
        put_line({numbers, std::to_string(first_.offset), known(s.metadata_length),
                  known(s.raw_length), known(s.objects), known(s.properties), known(s.channels),
                  known(s.values), known(count * s.values)},
                 s.state);
        last_.reset();
    }

  private:
    static bool are_alike(const segment_facts& a, const segment_facts& b)
    {
        return a.metadata_length == b.metadata_length && a.raw_length == b.raw_length &&
               a.objects == b.objects && a.properties == b.properties && a.channels == b.channels &&
               a.values == b.values && std::string_view(a.state) == b.state;
    }

    void put_line(const std::array<std::string, 9>& fields, std::string_view state)
    {
        constexpr std::array<std::size_t, 9> width{13, 13, 9, 12, 8, 11, 9, 11, 13};
        std::string line;
        for (std::size_t i = 0; i != width.size(); ++i) {
            line.append(width[i] - std::min(width[i], fields[i].size()), ' ');
            line.append(fields[i]).append(" ");
        }
        out_.put(line);
        out_.put(' ');
        out_.put(state);
        out_.put('\n');
    }

    output& out_;
    segment_facts first_{};
    std::optional<segment_facts> last_;
};

// Whether all strings of a channel are where its tables say.
bool strings_can_be_read(const std::string& name, const selected_channel& c, progress& shown)
{
    piece_reader<std::string> pieces(c.channel, shown);
    for (std::uint64_t first = 0; first != c.count;) {
        const std::uint64_t count = std::min(c.count - first, pieces.fitting());
        try {
            pieces.read(first, count);
        } catch (const tdms::error&) {
            std::string message = in_quotes(c.name());
            message.append(": strings cannot be read from value ");
            report(name, message.append(std::to_string(first)).append(" on"));
            return false;
        }
        first += count;
    }
    return true;
}

// Values that the intact segments state and do not hold, or that cannot be read. Those of a fixed
// size are where they are stated: only strings have tables of their own.
bool check_values(const std::string& name, const input& from)
{
    const tdms::file file = open_intact(from);
    progress shown("reading strings", from.size());
    bool all_there = true;
    for (const selected_channel& c : all_channels(file)) {
        if (c.lost != 0) {
            report(name, in_quotes(c.name()) + ": " + lost_values(c));
            all_there = false;
        }
        if (c.type == TDMS_TYPE_STRING) {
            all_there = strings_can_be_read(name, c, shown) && all_there;
        }
    }
    return all_there;
}

intact_part walk(const input& from, const std::function<void(const segment_facts&)>& visit)
{
    progress shown("checking", from.size());
    return walk_file(from, [&](const segment_facts& s) {
        visit(s);
        shown.at(s.offset);
    });
}

intact_part show_segments(output& out, const std::string& name, const input& from)
{
    out.put(printable(name) + '\n');
    segment_table table(out);
    intact_part intact = walk(from, [&table](const segment_facts& s) { table.add(s); });
    table.put_run();
    out.put(count_of(intact.segments, "intact segment") + ", " + with_commas(intact.size) + " of " +
            count_of(intact.file_size, "byte") + ", " + count_of(intact.values, "value") + '\n');
    return intact;
}

bool report_fault(const std::string& name, const input& from, const intact_part& intact)
{
    if (intact.end == file_end::nothing) return true;
    const bool may_grow = intact.end == file_end::truncated && !from.is_copy();
    report(name, intact.fault + (may_grow ? "; a file that is being recorded looks the same" : ""));
    return false;
}

bool check_file(output& out, const std::string& name, bool quiet)
{
    const input from(name);
    const intact_part intact =
        quiet ? walk(from, [](const segment_facts&) {}) : show_segments(out, name, from);
    // Nobody may read the output; what is wrong is reported all the same.
    bool nobody_reads = false;
    try {
        out.flush();
    } catch (const closed_pipe&) {
        nobody_reads = true;
    }
    bool all_well = report_fault(name, from, intact);
    if (intact.segments != 0) all_well = check_values(name, from) && all_well;
    if (nobody_reads) throw closed_pipe{};
    return all_well;
}

}  // namespace

bool check(const check_options& wanted)
{
    output out;
    bool first = true;
    return for_each_file(wanted.files, [&](const std::string& name) {
        if (!first && !wanted.quiet) out.put('\n');
        first = false;
        return check_file(out, name, wanted.quiet);
    });
}

}  // namespace tool
