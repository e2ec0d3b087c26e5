#include "command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <sstream>

#include "commands/commands.h"
#include "console/output.h"
#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"

namespace tool {
namespace {

constexpr const char* about_file = "The measurement file";
constexpr const char* about_files = "The measurement files";
constexpr const char* about_channels = "GROUP/CHANNEL, or GROUP for all its channels; default: all";

// These checks return what is wrong with an argument, or an empty string.

std::string count_in(const std::string& text)
{
    const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
    return digits && !text.empty() ? "" : "not a number of rows: " + in_quotes(text);
}

std::string any_text_in(const std::string& text)
{
    return text.empty() ? "must not be empty" : "";
}

std::string tolerance_in(const std::string& text)
{
    double value = 0;
    const bool is_number = CLI::detail::lexical_cast(text, value);
    return is_number && value >= 0 && std::isfinite(value) ? ""
                                                           : "not a tolerance: " + in_quotes(text);
}

// Parses the command line and runs a command.
class command_line {
  public:
    command_line()
        : app_("Shows, converts, draws, compares, checks and salvages TDMS files", "tdms")
    {
        app_.set_version_flag("--version", "tdms " TDMS_VERSION);
        app_.require_subcommand(1);
        app_.get_formatter()->column_width(32);
        app_.footer("FILE may be - for standard input. More: man tdms");
        add_info();
        add_dump();
        add_plot();
        add_convert();
        add_diff();
        add_check();
        add_salvage();
    }

    /// @return the exit status
    int run(int argc, char** argv)
    {
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& e) {
            return end_early(e);
        } catch (const usage_error& e) {
            return report_bad_usage(e.what());
        }
        return succeeded_ ? 0 : 1;
    }

  private:
    void add_info()
    {
        CLI::App& command =
            *app_.add_subcommand("info", "Show groups, channels, types, counts and properties");
        command.add_option("FILE", info_.files, about_files)->required();
        CLI::Option* const json =
            command.add_flag("--json", info_.json, "Print JSON, an array of files");
        CLI::Option* const names = command
                                       .add_flag("--names", info_.names,
                                                 "Print only names, as GROUP/CHANNEL, one per line")
                                       ->excludes(json);
        command
            .add_flag("--stats", info_.statistics,
                      "Read all values: extremes, mean, deviation (n - 1), NaN, times, rate")
            ->excludes(names);
        add_strict(command, info_.strict);
        add_local(command);
        command.callback([this] { succeeded_ = info(info_); });
    }

    void add_dump()
    {
        CLI::App& command = *app_.add_subcommand("dump", "Print values as CSV");
        command.add_option("FILE", dump_.file, about_file)->required();
        command.add_option("CHANNEL", dump_.channels, about_channels);
        CLI::Option* const from =
            command.add_option("--from", dump_.from, "The first row, counted from 0")
                ->check(count_in);
        command.add_option("--count", dump_.count, "Stop after this many rows")->check(count_in);
        command.add_option("--since", dump_.since, "Rows from this time on: 2026-05-04T10:00:00Z")
            ->check(any_text_in)
            ->excludes(from);
        CLI::Option* const until =
            command.add_option("--until", dump_.until, "Rows before this time")->check(any_text_in);
        command.add_flag("--time-first", dump_.time_first,
                         "Each group's times before its channels");
        command.add_flag("--units", dump_.units, "A second line with the units");
        command.add_option("--separator", dump_.separator,
                           "The character between columns; \\t for a tab");
        command.add_flag("--decimal-comma", dump_.decimal_comma,
                         "Numbers like 0,5; the default separator is then ;");
        command.add_flag("--crlf", dump_.crlf, "End lines with CR LF");
        CLI::Option* const target = command
                                        .add_option("-o,--output", dump_.target,
                                                    "The file to write instead of standard output")
                                        ->check(any_text_in);
        command.add_flag("--follow", dump_.follow, "Continue with what a recorder adds")
            ->excludes(target)
            ->excludes(until);
        add_strict(command, dump_.strict);
        add_local(command);
        command.callback([this] { run_one(dump, dump_, dump_.file); });
    }

    void add_plot()
    {
        CLI::App& command = *app_.add_subcommand("plot", "Draw channels");
        command.add_option("FILE", plot_.file, about_file)->required();
        command.add_option("CHANNEL", plot_.channels, about_channels);
        CLI::Option* const target =
            command
                .add_option("-o,--output", plot_.target,
                            "The picture to write, .svg or .png; default: the terminal")
                ->check(any_text_in);
        command
            .add_option("--size", plot_.size, "The size of the picture in pixels, such as 1200x800")
            ->needs(target);
        command
            .add_option("--since", plot_.since, "Samples from this time on: 2026-05-04T10:00:00Z")
            ->check(any_text_in);
        CLI::Option* const until =
            command.add_option("--until", plot_.until, "Samples before this time")
                ->check(any_text_in);
        command.add_flag("--follow", plot_.follow, "Continue with what a recorder adds")
            ->excludes(target)
            ->excludes(until);
        add_strict(command, plot_.strict);
        add_local(command);
        command.callback([this] { run_one(plot, plot_, plot_.file); });
    }

    void add_convert()
    {
        CLI::App& command =
            *app_.add_subcommand("convert", "Convert to HDF5 or CSV, or from CSV to TDMS");
        command.add_option("FILE", convert_.source, "A measurement file, or .csv")->required();
        command
            .add_option("-o,--output", convert_.target,
                        "The .h5, .hdf5, .csv or .tdms file to write")
            ->required()
            ->check(any_text_in);
        command.add_flag("--units", convert_.units, "The second line of CSV has the units");
        add_strict(command, convert_.strict);
        add_local(command);
        command.callback([this] { run_one(convert, convert_, convert_.source); });
    }

    void add_diff()
    {
        CLI::App& command = *app_.add_subcommand("diff", "Report what differs between two files");
        command.add_option("FILE", diff_.first, about_file)->required();
        command.add_option("OTHER", diff_.second, "The file to compare it with")->required();
        command.add_option("--tolerance", diff_.tolerance, "Numbers may differ by this much")
            ->check(tolerance_in);
        command
            .add_option("--relative", diff_.relative_tolerance,
                        "Numbers may differ by this share of the larger")
            ->check(tolerance_in);
        command.add_flag("-q,--quiet", diff_.quiet, "Print nothing; only set the exit status");
        add_local(command);
        command.callback([this] { succeeded_ = diff(diff_); });
    }

    void add_check()
    {
        CLI::App& command = *app_.add_subcommand(
            "check", "Report whether files are intact, and where they are not");
        command.add_option("FILE", check_.files, about_files)->required();
        command.add_flag("-q,--quiet", check_.quiet, "Print only what is wrong, on standard error");
        command.callback([this] { succeeded_ = check(check_); });
    }

    void add_salvage()
    {
        CLI::App& command =
            *app_.add_subcommand("salvage", "Copy the intact segments of a damaged file");
        command.add_option("FILE", salvage_.file, about_file)->required();
        command.add_option("-o,--output", salvage_.target, "The file to write, or -")
            ->required()
            ->check(any_text_in);
        command.callback([this] { run_one(salvage, salvage_, salvage_.file); });
    }

    static void add_strict(CLI::App& command, bool& strict)
    {
        command.add_flag("--strict", strict, "Exit with 1 if the file is not complete");
    }

    static void add_local(CLI::App& command)
    {
        command.add_flag_callback("--local", show_local_times, "Use local time instead of UTC");
    }

    // Runs a command about one file and reports its failures with the file's name.
    template <class Options>
    void run_one(bool (*command)(const Options&), const Options& options, const std::string& file)
    {
        succeeded_ = for_each_file({file}, [&](const std::string&) { return command(options); });
    }

    // Prints help or the version if they were asked for, and otherwise reports bad usage.
    int end_early(const CLI::ParseError& e)
    {
        std::ostringstream asked_for;
        std::ostringstream errors;
        if (app_.exit(e, asked_for, errors) == 0) {
            output out;
            out.put(asked_for.str());
            out.flush();
            return 0;
        }
        const std::vector<std::string> unknown = app_.remaining();
        return report_bad_usage(unknown.empty() ? e.what() : "unknown command: " + unknown.front());
    }

    int report_bad_usage(const std::string& what) const
    {
        const auto commands = app_.get_subcommands();
        const std::string of = commands.empty() ? "" : ' ' + commands.front()->get_name();
        report("", what + "\nTry 'tdms" + of + " --help'.");
        return 2;
    }

    CLI::App app_;
    info_options info_;
    dump_options dump_;
    plot_options plot_;
    convert_options convert_;
    diff_options diff_;
    check_options check_;
    salvage_options salvage_;
    bool succeeded_ = true;
};

}  // namespace

int run_command_line(int argc, char** argv)
{
    return command_line().run(argc, argv);
}

}  // namespace tool
