#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "commands/commands.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"
#include "console/time_parser.h"
#include "files/channel_selection.h"
#include "files/csv_columns.h"
#include "files/follower.h"
#include "files/group_times.h"
#include "files/measurement_file.h"
#include "files/new_file.h"

namespace tool {
namespace {

csv_format format_of(const dump_options& wanted)
{
    constexpr std::string_view in_values = "\"\r\n+-.0123456789";
    csv_format format{wanted.decimal_comma ? ';' : ',', wanted.decimal_comma,
                      wanted.crlf ? "\r\n" : "\n"};
    if (!wanted.separator) return format;
    const std::string separator = *wanted.separator == "\\t" ? "\t" : *wanted.separator;
    if (separator.size() != 1 || in_values.find(separator) != std::string_view::npos) {
        throw usage_error("not a separator: " + in_quotes(separator));
    }
    if (wanted.decimal_comma && separator == ",") {
        throw usage_error("with --decimal-comma the separator must not be a comma");
    }
    format.separator = separator[0];
    return format;
}

// The number of samples in the longest of a group's channels that are dumped.
std::uint64_t samples_of(const std::vector<selected_channel>& channels, const std::string& group)
{
    std::uint64_t count = 0;
    for (const selected_channel& c : channels) {
        if (c.group.name() == group && c.type != TDMS_TYPE_TIMESTAMP) {
            count = std::max(count, c.count);
        }
    }
    return count;
}

// Which rows of which channels are dumped.
class dump_plan {
  public:
    dump_plan(const tdms::file& file, const dump_options& wanted)
        : wanted_(wanted), channels_(select(file, wanted.channels))
    {
        if (!wanted.since.empty()) since_ = time_from(wanted.since);
        if (!wanted.until.empty()) until_ = time_from(wanted.until);
        for (const selected_channel& c : channels_) add(c);
    }

    std::vector<csv_source> sources;

  private:
    // What all channels of a group share.
    struct group_rows {
        std::string group;
        std::optional<selected_channel> times;
        std::uint64_t first;
        std::uint64_t end;
    };

    void add(const selected_channel& c)
    {
        const std::string group = c.group.name();
        auto known = std::ranges::find(groups_, group, &group_rows::group);
        if (known == groups_.end()) {
            groups_.push_back(rows_of(c));
            known = groups_.end() - 1;
            if (wanted_.time_first) add(*known->times, *known);
        }
        const bool is_first_column =
            wanted_.time_first && known->times->channel.name() == c.channel.name();
        if (!is_first_column) add(c, *known);
    }

    void add(const selected_channel& c, const group_rows& rows)
    {
        sources.push_back({c, rows.first, std::min(rows.end, c.count)});
    }

    group_rows rows_of(const selected_channel& c) const
    {
        group_rows rows{c.group.name(), std::nullopt, wanted_.from, ~std::uint64_t{0}};
        if (since_ || until_ || wanted_.time_first) {
            rows.times = required_times(c.group, samples_of(channels_, rows.group));
        }
        if (since_) rows.first = row_at(*rows.times, *since_);
        if (until_) rows.end = row_at(*rows.times, *until_);
        if (since_ || until_) check_order(rows);
        return rows;
    }

    // Rows are found by bisection, which fails if the times do not ascend.
    void check_order(const group_rows& rows) const
    {
        const std::uint64_t end = std::min(rows.end, rows.times->count);
        const std::uint64_t left = end - std::min(rows.first, end);
        if (ascend(*rows.times, rows.first, rows.first + std::min(left, wanted_.count))) return;
        throw failure(in_quotes(rows.times->name()) +
                      ": the times do not ascend; use --from and --count");
    }

    const dump_options& wanted_;
    std::vector<selected_channel> channels_;
    std::vector<group_rows> groups_;
    std::optional<tdms::time> since_;
    std::optional<tdms::time> until_;
};

class dump_command {
  public:
    explicit dump_command(const dump_options& wanted) : wanted_(wanted), from_(wanted.file) {}

    bool run()
    {
        const csv_format format = format_of(wanted_);
        if (wanted_.target.empty()) {
            put(output(), format);
        } else {
            from_.reject_as_target(wanted_.target);
            new_file target(wanted_.target);
            put(output([&](std::string_view bytes) { target.write(bytes); }), format);
            target.commit();
        }
        return succeeded_;
    }

  private:
    void put(output out, const csv_format& format)
    {
        std::optional<follower> recorder;
        if (wanted_.follow) recorder.emplace(from_);
        tdms::file file = open_intact(from_);
        if (recorder) wait_for_channels(file, *recorder);
        // After damage nothing can be followed.
        const bool is_sound = wanted_.follow
                                  ? report_damage(wanted_.file, from_, file)
                                  : report_rest(wanted_.file, from_, file, wanted_.strict);
        if (!is_sound) succeeded_ = false;
        csv_table table(out, format, dump_plan(file, wanted_).sources);
        for (const csv_source& s : table.sources()) {
            if (s.from.lost != 0) report_error(s.from, lost_values(s.from));
        }
        table.put_names();
        if (wanted_.units) table.put_units();
        std::uint64_t left = wanted_.count;
        put_rows(table, left);
        out.flush();
        if (!recorder && left != 0 && left == wanted_.count && table.has_values()) {
            report(wanted_.file, "no values in these rows");
        }
        if (recorder && is_sound) follow(file, *recorder, table, out, left);
    }

    void put_rows(csv_table& table, std::uint64_t& left)
    {
        std::optional<progress> shown;
        // On a terminal it would appear between the rows.
        if (!wanted_.target.empty() || isatty(STDOUT_FILENO) == 0) {
            shown.emplace("dumping", table.total());
        }
        const auto on_error = [this](const selected_channel& c, const std::string& message) {
            report_error(c, message);
        };
        while (left != 0) {
            const std::uint64_t rows = table.put_rows(left, on_error);
            if (rows == 0) return;
            left -= rows;
            if (shown) shown->at(table.done());
        }
    }

    void report_error(const selected_channel& c, const std::string& message)
    {
        report(wanted_.file, in_quotes(c.name()) + ": " + message);
        succeeded_ = false;
    }

    static void wait_for_channels(tdms::file& file, follower& recorder)
    {
        while (all_channels(file).empty()) {
            follower::wait(pause);
            recorder.refresh(file);
        }
    }

    // Continues with what a recorder adds.
    void follow(tdms::file& file, follower& recorder, csv_table& table, output& out,
                std::uint64_t left)
    {
        std::size_t channels = count_channels(file);
        while (left != 0) {
            follower::wait(pause);
            recorder.refresh(file);
            table.count_values();
            put_rows(table, left);
            out.flush();
            const std::size_t now = count_channels(file);
            if (now != std::exchange(channels, now)) {
                report(wanted_.file, "there are new channels; run the command again to see them");
            }
        }
    }

    static std::size_t count_channels(const tdms::file& file)
    {
        std::size_t count = 0;
        for (const tdms::group& g : file.groups()) count += g.channels().size();
        return count;
    }

    static constexpr std::chrono::milliseconds pause{100};
    const dump_options& wanted_;
    input from_;
    bool succeeded_ = true;
};

}  // namespace

bool dump(const dump_options& wanted)
{
    return dump_command(wanted).run();
}

}  // namespace tool
