/**
 * Compares this library with HDF5 and with bare stdio.
 *
 * Without arguments: tables in Markdown, medians over rounds in which the contenders take turns, so
 * that whatever else the machine does hits all alike. With arguments: the same runs under Google
 * Benchmark, which takes its own options.
 */
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>

#include "workloads.h"

namespace {

using namespace bench;

constexpr std::size_t mebi = 1024 * 1024;
constexpr Shape bulk{"bulk", 8, 2 * mebi, 1};
constexpr Shape stream{"stream", 16, 1000, 500};
constexpr Shape many{"many", 1, 10, 50'000};
constexpr Shape wide{"wide", 5000, 10, 20};
constexpr Shape none{};

constexpr double no_target = 0;

struct Workload {
    const char* name;
    Shape shape;
    Run Runs::*run;
    double of_limit;  // the highest acceptable ratio to the limit's time
    double of_hdf5;   // the same to HDF5's
};

constexpr Workload workloads[] = {
    {"bulk write: 8 channels of 2 Mi doubles, one save", bulk, &Runs::write, 1.7, no_target},
    {"bulk read: open, read all 8", bulk, &Runs::read, 1.15, 1.1},
    {"stream write: 16 channels of 1000 doubles, 500 saves", stream, &Runs::write, 0.9, 0.6},
    {"stream read: open, read all 16", stream, &Runs::read, 1.5, 1.2},
    {"many segments: write 10 doubles, 50,000 saves", many, &Runs::write, 3, 0.05},
    {"many segments: open", many, &Runs::open, 1.8, no_target},
    {"many segments: read the channel", many, &Runs::read_opened, 0.9, no_target},
    {"wide: write 5000 channels of 10 doubles, 20 saves", wide, &Runs::write, no_target, 0.05},
    {"wide: open", wide, &Runs::open, no_target, 3},
    {"strings: write 500,000", none, &Runs::write_texts, 2, 0.5},
    {"strings: open, read", none, &Runs::read_texts, no_target, 0.5},
    {"timestamps: write 300,000", none, &Runs::write_times, 0.1, no_target},
    {"timestamps: open, read", none, &Runs::read_times, 0.1, no_target},
};

struct Contender {
    const char* name;
    const Runs& runs;
};

constexpr Contender contenders[] = {
    {"library", library_runs}, {"limit", limit_runs}, {"HDF5", hdf5_runs}};

using Seconds = std::array<double, std::size(contenders)>;

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** Each contender's time in one round; 0 for one without such a run. */
Seconds run_round(const Workload& workload, Series& series)
{
    Seconds seconds{};
    for (std::size_t i = 0; i != seconds.size(); ++i) {
        const Run run = contenders[i].runs.*workload.run;
        if (run != nullptr) seconds[i] = run(series);
    }
    return seconds;
}

/** At least five rounds, and more of the short ones. */
std::vector<Seconds> run_rounds(const Workload& workload)
{
    Series series(workload.shape);
    run_round(workload, series);  // not counted: the first use of a library sets it up
    std::vector<Seconds> rounds;
    for (double total = 0; rounds.size() < 5 || (rounds.size() < 21 && total < 8);)
        total += timed([&] { rounds.push_back(run_round(workload, series)); });
    return rounds;
}

Seconds medians(const std::vector<Seconds>& rounds)
{
    Seconds result{};
    for (std::size_t i = 0; i != result.size(); ++i) {
        std::vector<double> values;
        for (const Seconds& round : rounds) values.push_back(round[i]);
        result[i] = median(values);
    }
    return result;
}

/** In bold where the target is missed. */
const char* verdict(bool reached)
{
    return reached ? "yes" : "**no**";
}

void print_time(double seconds)
{
    if (seconds == 0)
        std::printf(" - |");
    else
        std::printf(" %.4g ms |", seconds * 1e3);
}

void print_ratio(double library, double other, double target)
{
    if (other == 0)
        std::printf(" - |");
    else
        std::printf(" %.3g |", library / other);
    if (target == no_target)
        std::printf(" | |");
    else
        std::printf(" %g | %s |", target, other == 0 ? "-" : verdict(library <= target * other));
}

void print_comparison()
{
    std::printf(
        "\nMedian times of 5 to 21 rounds. The limit is bare stdio moving the same bytes, for\n"
        "timestamps one `mktime` or `localtime` call for each value. Ratios are the\n"
        "library's time to the other's; the target is the highest acceptable one. HDF5 reads one\n"
        "channel when it opens.\n\n"
        "| workload | library | limit | HDF5 | to limit | target | reached | to HDF5 | target | "
        "reached |\n| --- | --: | --: | --: | --: | --: | --- | --: | --: | --- |\n");
    for (const Workload& workload : workloads) {
        const auto [library, limit, hdf5] = medians(run_rounds(workload));
        std::printf("| %s |", workload.name);
        for (const double seconds : {library, limit, hdf5}) print_time(seconds);
        print_ratio(library, limit, workload.of_limit);
        print_ratio(library, hdf5, workload.of_hdf5);
        std::printf("\n");
        std::fflush(stdout);
    }
}

double peak_mib()
{
    rusage usage{};
    require(getrusage(RUSAGE_SELF, &usage) == 0, "getrusage");
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/** What a run takes beyond the arrays, which are in memory before it. A failure ends the process.
 */
double growth_mib(Run run) noexcept
{
    Series series(bulk);
    const double before = peak_mib();
    run(series);
    return peak_mib() - before;
}

/** A peak never falls again, so each run gets a process of its own. */
double growth_in_child(Run run)
{
    int ends[2];
    require(pipe(ends) == 0, "pipe");
    const pid_t child = fork();
    require(child >= 0, "fork");
    double growth = 0;
    if (child == 0) {
        growth = growth_mib(run);
        // Without destructors: the scratch folder is the parent's.
        _exit(::write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
    }
    close(ends[1]);
    const bool received = ::read(ends[0], &growth, sizeof growth) == sizeof growth;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    require(received, "measuring memory");
    return growth;
}

void print_memory()
{
    struct Row {
        const char* name;
        Run run;
        double target;
    };
    constexpr double slack = 4;
    constexpr double values = bulk.channels * bulk.values * sizeof(double) / mebi;
    const Row rows[] = {{"bulk write", library_runs.write, 2 * values + slack},
                        {"bulk read", library_runs.read, slack}};
    std::printf(
        "\nPeak memory beyond the caller's arrays. Writing takes the staged values and one "
        "segment.\n\n| run | peak | target | reached |\n| --- | --: | --: | --- |\n");
    std::fflush(stdout);  // or each child would print it again
    for (const Row& row : rows) {
        const double mib = growth_in_child(row.run);
        std::printf("| %s | %.1f MiB | %.0f MiB | %s |\n", row.name, mib, row.target,
                    verdict(mib <= row.target));
        std::fflush(stdout);
    }
}

/** The median time of opening a file of that shape; small files are opened more often. */
double opening_time(const Shape& shape)
{
    Series series(shape);
    const std::size_t work = shape.saves * shape.channels;
    std::vector<double> seconds(std::clamp<std::size_t>(100'000 / work, 7, 501));
    for (double& second : seconds) second = library_runs.open(series);
    vacated(series.file(".tdms"));
    return median(seconds);
}

void print_scaling(const char* what, const std::vector<std::size_t>& counts,
                   Shape (*shape)(std::size_t))
{
    std::printf("\n| %s | open | for each | to the first row |\n| --: | --: | --: | --: |\n", what);
    double first = 0;
    for (const std::size_t count : counts) {
        const double seconds = opening_time(shape(count));
        const double each = seconds / static_cast<double>(count);
        if (first == 0) first = each;
        std::printf("| %zu | %.4g ms | %.0f ns | %.2f |\n", count, seconds * 1e3, each * 1e9,
                    each / first);
        std::fflush(stdout);
    }
}

void print_tables()
{
    scratch("");  // made here, so that it is not made in a child
    print_memory();
    print_comparison();
    std::printf("\nOpening, by size; a save makes two segments.\n");
    print_scaling("segments", {1'000, 10'000, 100'000}, [](std::size_t count) {
        return Shape{"scaling", 1, 10, count / 2};
    });
    print_scaling("channels", {10, 100, 1'000, 10'000}, [](std::size_t count) {
        return Shape{"scaling", count, 1, 1};
    });
}

void register_run(const Workload& workload, const Contender& contender)
{
    const Run run = contender.runs.*workload.run;
    if (run == nullptr) return;
    const auto measure = [run, shape = workload.shape](benchmark::State& state) {
        Series series(shape);
        for ([[maybe_unused]] auto _ : state) state.SetIterationTime(run(series));
    };
    const std::string name = std::string(workload.name) + "/" + contender.name;
    benchmark::RegisterBenchmark(name.c_str(), measure)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void run_google_benchmark(int count, char** arguments)
{
    for (const Workload& workload : workloads)
        for (const Contender& contender : contenders) register_run(workload, contender);
    benchmark::Initialize(&count, arguments);
    require(!benchmark::ReportUnrecognizedArguments(count, arguments), "reading the arguments");
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace

int main(int count, char** arguments)
{
    try {
        count > 1 ? run_google_benchmark(count, arguments) : print_tables();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tdms_bench: %s\n", error.what());
        return 1;
    }
}
