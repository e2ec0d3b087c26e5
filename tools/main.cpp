#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <ctime>

#include "commands.h"

namespace tool {
namespace {

// The parser takes an argument in brackets for a list of arguments, and "++" for the end of a
// command's. A name may be such all the same: while the line is parsed, a byte goes before it,
// and before what begins with that byte.
constexpr char name_mark = '\1';

std::vector<std::string> marked_arguments(int count, char** arguments)
{
    std::vector<std::string> marked;
    for (int i = count - 1; i > 0; --i) {  // the parser takes them from the back
        marked.emplace_back(arguments[i]);
        const std::string& name = marked.back();
        if (name == "++" || name.starts_with('[') || name.starts_with(name_mark)) {
            marked.back().insert(0, 1, name_mark);
        }
    }
    return marked;
}

// A command about one file, whose failures are reported with the file's name.
template <class Options>
bool run_one(bool (*command)(const Options&), const Options& options)
{
    return for_each_file({options.file}, [&](const std::string&) { return command(options); });
}

template <class T>
CLI::Option* add(CLI::App& command, const char* name, T& variable, const char* what)
{
    return command.add_option(name, variable, what)->transform([](const std::string& argument) {
        return argument.starts_with(name_mark) ? argument.substr(1) : argument;
    });
}

// The parser takes a negative number for one that is very large. @return the complaint, or none
std::string not_negative(const std::string& number)
{
    return number.starts_with('-') ? "it must not be negative" : "";
}

// Help and version are asked for; all else that ends the parsing is bad usage.
int end_early(const CLI::App& app, const CLI::ParseError& e)
{
    std::ostringstream asked_for;
    std::ostringstream complaint;
    if (app.exit(e, asked_for, complaint) == 0) {
        output out;
        out.put(asked_for.str());
        out.flush();
        return 0;
    }
    const std::vector<std::string> unknown = app.remaining();
    const std::string what = unknown.empty() ? e.what() : "unknown command: " + unknown.front();
    report("", what + "\nTry 'tdms --help'.");
    return 2;
}

int parse_and_run(int argc, char** argv)
{
    CLI::App app("Shows, converts, draws, checks and salvages TDMS measurement files", "tdms");
    app.set_version_flag("--version", "tdms " TDMS_TOOL_VERSION);
    app.require_subcommand(1);
    app.get_formatter()->column_width(30);
    app.footer("FILE may be - for standard input. More: man tdms");
    const char* const about_files = "The measurement files";
    const char* const about_file = "The measurement file";
    const char* const about_channels = "GROUP/CHANNEL, or GROUP for all in it";
    bool all_well = true;

    info_options infos;
    CLI::App& info_command =
        *app.add_subcommand("info", "Show the tree: types, counts, properties");
    add(info_command, "FILE", infos.files, about_files)->required();
    CLI::Option* json = info_command.add_flag("--json", infos.json, "As JSON, an array of files");
    info_command.add_flag("--names", infos.names, "Only GROUP/CHANNEL, one per line")
        ->excludes(json);
    info_command.callback([&] { all_well = info(infos); });

    dump_options dumps;
    CLI::App& dump_command = *app.add_subcommand("dump", "Print values as CSV");
    add(dump_command, "FILE", dumps.file, about_file)->required();
    add(dump_command, "CHANNEL", dumps.channels, about_channels);
    dump_command.add_option("--from", dumps.from, "The first row, counted from 0")
        ->check(not_negative);
    dump_command.add_option("--count", dumps.count, "How many rows at most")->check(not_negative);
    dump_command.add_flag("--crlf", dumps.crlf, "End lines with CR LF");
    dump_command.callback([&] { all_well = run_one(dump, dumps); });

    plot_options plots;
    CLI::App& plot_command = *app.add_subcommand("plot", "Draw channels");
    add(plot_command, "FILE", plots.file, about_file)->required();
    add(plot_command, "CHANNEL", plots.channels, about_channels)->required();
    add(plot_command, "-o,--output", plots.target, "A picture, .svg or .png; else the terminal");
    plot_command.callback([&] { all_well = run_one(plot, plots); });

    std::vector<std::string> checked;
    CLI::App& check_command = *app.add_subcommand("check", "Report whether each segment is intact");
    add(check_command, "FILE", checked, about_files)->required();
    check_command.callback([&] { all_well = check(checked); });

    salvage_options salvaged;
    CLI::App& salvage_command =
        *app.add_subcommand("salvage", "Copy a truncated file's intact segments");
    add(salvage_command, "FILE", salvaged.file, about_file)->required();
    add(salvage_command, "-o,--output", salvaged.target, "The file to write")->required();
    salvage_command.callback([&] { all_well = run_one(salvage, salvaged); });

    try {
        app.parse(marked_arguments(argc, argv));
        return all_well ? 0 : 1;
    } catch (const CLI::ParseError& e) {
        return end_early(app, e);
    }
}

int run(int argc, char** argv)
{
    try {
        return parse_and_run(argc, argv);
    } catch (const closed_pipe&) {
        return any_reported() ? 1 : 0;
    } catch (const usage_error& e) {
        report("", e.what());
        return 2;
    } catch (const std::bad_alloc&) {
        constexpr std::string_view message = "tdms: out of memory\n";  // takes none
        static_cast<void>(write_all(STDERR_FILENO, message.data(), message.size()));
    } catch (const std::exception& e) {
        report("", e.what());
    }
    return 1;
}

// A standard stream that is closed would lend its number to the next file that is opened. Instead
// it becomes one that cannot be used in its direction.
void fill_closed_streams()
{
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (fcntl(number, F_GETFD) >= 0) continue;
        static_cast<void>(open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

}  // namespace
}  // namespace tool

int main(int argc, char** argv)
{
    tool::fill_closed_streams();
    tzset();  // which localtime_r need not do
    // That nobody reads our output, or that a file may not grow, is the write's error to report.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);  // or nobody learns how a process ended
    return tool::run(argc, argv);
}
