#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "files/measurement_file.h"
#include "files/piece_reader.h"
#include "files/segments.h"
#include "files/selected_channel.h"

namespace tool {
namespace {

// A table of segments, in which consecutive segments of the same form share a line. After the first
// lines all intact segments do, so that the table stays readable.
class segment_table {
  public:
    void add(const segment_facts& s)
    {
        const numbers_of_segment numbers{s.metadata_length, s.raw_length, s.objects,
                                         s.properties,      s.channels,   s.values};
        const bool same_state = std::string_view(first_.state) == s.state;
        const bool alike = same_state && (numbers == numbers_ || lines_.size() > most_lines);
        if (first_.number == 0 || !alike) {
            end_line();
            first_ = s;
            numbers_ = numbers;
        }
        for (std::size_t i = 0; i != numbers.size(); ++i) {
            same_[i] = same_[i] && numbers[i] == numbers_[i];
        }
        last_number_ = s.number;
        all_values_ += s.values;
    }

    void put(output& out)
    {
        end_line();
        std::array<std::size_t, columns> widths{};
        for (const auto& line : lines_) {
            for (std::size_t i = 0; i != columns; ++i) {
                widths[i] = std::max(widths[i], line[i].size());
            }
        }
        for (const auto& line : lines_) {
            for (std::size_t i = 0; i != columns; ++i) {
                const std::string blanks(2 + widths[i] - line[i].size(), ' ');
                out.put(i + 1 == columns ? "  " + line[i] + '\n' : blanks + line[i]);
            }
        }
    }

  private:
    using numbers_of_segment = std::array<std::uint64_t, 6>;
    static constexpr std::size_t most_lines = 50;
    static constexpr std::size_t columns = 10;

    void end_line()
    {
        if (first_.number == 0) return;
        std::string segments = std::to_string(first_.number);
        if (last_number_ != first_.number) {
            segments.append("-").append(std::to_string(last_number_));
        }
        std::array<std::string, columns> line{segments, std::to_string(first_.offset)};
        const bool known = first_.metadata_length != 0;
        for (std::size_t i = 0; i != numbers_.size(); ++i) {
            line[2 + i] = !known ? "-" : same_[i] ? std::to_string(numbers_[i]) : "various";
        }
        line[8] = known ? std::to_string(all_values_) : "-";
        line[9] = first_.state;
        lines_.push_back(std::move(line));
        first_ = {};
        same_.fill(true);
        all_values_ = 0;
    }

    std::vector<std::array<std::string, columns>> lines_{
        {"segments", "offset", "metadata", "raw data", "objects", "properties", "channels",
         "values", "all values", "state"}};
    // The current line. There is none if the first segment has no number.
    segment_facts first_{};
    numbers_of_segment numbers_{};  // of the first segment
    std::array<bool, 6> same_{true, true, true, true, true, true};
    std::uint64_t last_number_ = 0;
    std::uint64_t all_values_ = 0;
};

// Reads all strings of a channel, and reports the first that cannot be read.
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

// Reports channels whose values the intact segments state but do not hold, or cannot be read. Only
// strings are read for that: they have tables of offsets, while values of a fixed size are where
// the metadata says.
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
    segment_table table;
    intact_part intact = walk(from, [&table](const segment_facts& s) { table.add(s); });
    table.put(out);
    out.put(number_of(intact.segments, "intact segment") + ", " + with_commas(intact.size) +
            " of " + number_of(intact.file_size, "byte") + ", " +
            number_of(intact.values, "value") + '\n');
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
    // Reports what is wrong even if nobody reads the output.
    bool nobody_reads = false;
    try {
        out.flush();
    } catch (const closed_pipe&) {
        nobody_reads = true;
    }
    bool is_intact = report_fault(name, from, intact);
    if (intact.segments != 0) is_intact = check_values(name, from) && is_intact;
    if (nobody_reads) throw closed_pipe{};
    return is_intact;
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
