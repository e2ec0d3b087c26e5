#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "files/intact_segments.h"
#include "files/new_file.h"
#include "files/selected_channel.h"

namespace tool {
namespace {

// Reads ranges of a file, piece by piece.
class piece_source {
  public:
    explicit piece_source(int file) : file_(file) {}

    /// Calls `use(piece, end of it)` for the bytes from `begin` to `end`.
    template <class Use>
    void for_each(std::uint64_t begin, std::uint64_t end, Use use)
    {
        if (lseek(file_, static_cast<off_t>(begin), SEEK_SET) < 0) throw system_failure("reading");
        while (begin != end) {
            const std::uint64_t part = std::min(size, end - begin);
            const std::size_t got = read_some(file_, bytes_.get(), part, "reading");
            if (got == 0) throw failure("the file was truncated while it was read");
            begin += got;
            use(std::string_view(bytes_.get(), got), begin);
        }
    }

  private:
    static constexpr std::uint64_t size = 1 << 20;
    int file_;
    std::unique_ptr<char[]> bytes_ = std::make_unique_for_overwrite<char[]>(size);
};

// Collects what was kept and what was lost.
class salvage_report {
  public:
    void add_kept(std::uint64_t bytes)
    {
        ++segments_;
        bytes_ += bytes;
        middle_lost_ = middle_lost_ || ranges_ != 0;
    }

    void add_lost(const lost_range& range)
    {
        lost_bytes_ += range.end - range.begin;
        const bool follows = !lost_.empty() && lost_.back().end == range.begin;
        if (follows && lost_.back().reason == range.reason) {
            lost_.back().end = range.end;
            return;
        }
        ++ranges_;
        if (lost_.size() != most_shown) lost_.push_back(range);
    }

    std::uint64_t segments() const { return segments_; }
    bool middle_lost() const { return middle_lost_; }
    const std::vector<lost_range>& lost() const { return lost_; }

    /// @param values the number that the new file holds, which may be less than what it states
    void put(output& out, std::uint64_t values) const
    {
        out.put("kept: " + number_of(segments_, "segment") + ", " + number_of(bytes_, "byte") +
                ", " + number_of(values, "value") + '\n');
        for (const lost_range& range : lost_) {
            out.put("lost: " + number_of(range.end - range.begin, "byte") + " from offset " +
                    std::to_string(range.begin) + " to " + std::to_string(range.end) + ": " +
                    range.reason +
                    (range.begin_is_certain ? "\n" : "; the segment before it may be damaged\n"));
        }
        if (ranges_ > lost_.size()) {
            out.put("lost: " + with_commas(ranges_ - lost_.size()) + " more ranges; in all " +
                    number_of(lost_bytes_, "byte") + '\n');
        }
        if (ranges_ == 0) out.put("lost: nothing\n");
        out.flush();
    }

  private:
    static constexpr std::size_t most_shown = 1000;

    std::uint64_t segments_ = 0;
    std::uint64_t bytes_ = 0;
    std::uint64_t lost_bytes_ = 0;
    std::uint64_t ranges_ = 0;
    bool middle_lost_ = false;
    std::vector<lost_range> lost_;
};

salvage_report copy_intact_segments(const input& from, new_file& to)
{
    salvage_report kept;
    progress shown("salvaging", from.size());
    const auto at = [&shown](std::uint64_t offset) { shown.at(offset); };
    intact_segments segments(from, at);
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    piece_source pieces(from.file());
    const auto copy = [&] {
        pieces.for_each(begin, end, [&](std::string_view bytes, std::uint64_t done) {
            to.write(bytes);
            at(done);
        });
    };
    const auto add_lost = [&kept](const lost_range& range) { kept.add_lost(range); };
    while (const std::optional<found_segment> next = segments.next(add_lost)) {
        kept.add_kept(next->end - next->facts.offset);
        if (next->facts.offset != end) {
            copy();
            begin = next->facts.offset;
        }
        end = next->end;
    }
    copy();
    return kept;
}

void put_on_standard_output(const std::string& path)
{
    const descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) throw system_failure("temporary file");
    const off_t size = lseek(file.get(), 0, SEEK_END);
    progress shown("writing", static_cast<std::uint64_t>(size));
    piece_source(file.get())
        .for_each(0, static_cast<std::uint64_t>(size),
                  [&](std::string_view bytes, std::uint64_t done) {
                      write_standard_output(bytes);
                      shown.at(done);
                  });
}

std::uint64_t count_values(const tdms::file& file)
{
    std::uint64_t values = 0;
    for (const selected_channel& c : all_channels(file)) values += c.count;
    return values;
}

void write_standard_error(std::string_view bytes)
{
    static_cast<void>(write_to(STDERR_FILENO, bytes.data(), bytes.size()));
}

}  // namespace

bool salvage(const salvage_options& wanted)
{
    const bool to_standard_output = wanted.target == "-";
    const input from(wanted.file);
    from.reject_as_target(to_standard_output ? "/dev/stdout" : wanted.target);
    // Nothing goes to standard output before all of it is known.
    new_file to = to_standard_output ? new_file::temporary() : new_file(wanted.target);
    const salvage_report kept = copy_intact_segments(from, to);
    if (kept.segments() == 0 && !kept.lost().empty()) {
        throw failure(walk_file(from, [](const segment_facts&) {}).fault +
                      "; there is nothing to keep");
    }
    const std::uint64_t values = count_values(tdms::file(to.path()));
    if (to_standard_output) {
        put_on_standard_output(to.path());
    } else {
        to.commit();
    }
    output out(to_standard_output ? write_standard_error : write_standard_output);
    kept.put(out, values);
    return !kept.middle_lost();
}

}  // namespace tool
