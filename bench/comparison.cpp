#include "comparison.h"

#include <array>
#include <cstdio>
#include <iterator>

#include "tables.h"

namespace bench {

namespace {

constexpr Shape stream{"stream", 16, 1000, 500};
constexpr Shape many{"many", 1, 10, 50'000};
constexpr Shape wide{"wide", 5000, 10, 20};
constexpr Shape single{"single", 1, 1'000'000, 1};
constexpr Shape none{};

constexpr double no_target = 0;

constexpr Workload workload_list[] = {
    {"bulk write: 8 channels of 2 Mi doubles, one save", bulk, &Runs::write, 1.75, 1.75},
    {"bulk write by tdms_append + tdms_save", bulk, &Runs::append_and_save, 1.75, 1.75},
    {"bulk read: open, read all 8", bulk, &Runs::read, 1.15, 1.1},
    {"stream write: 16 channels of 1000 doubles, 500 saves", stream, &Runs::write, 0.9, 0.35},
    {"stream read: open, read all 16", stream, &Runs::read, 1.15, 0.65},
    {"random ranges of that file: 10,000 of 1000 doubles", stream, &Runs::read_ranges, 1.15, 0.25},
    {"many segments: write 10 doubles, 50,000 saves", many, &Runs::write, 3, 0.05},
    {"many segments: open", many, &Runs::open, 0.18, no_target},
    {"many segments: read the channel", many, &Runs::read_opened, 0.3, no_target},
    {"wide: write 5000 channels of 10 doubles, 20 saves", wide, &Runs::write, 3, 0.05},
    {"wide: open", wide, &Runs::open, 3.2, 8},
    {"append one double at a time, a million", single, &Runs::append_singly, 6, no_target},
    {"strings: write 500,000", none, &Runs::write_strings, 2, 0.5},
    {"strings: open, read", none, &Runs::read_strings, 2.3, 0.5},
    {"timestamps: write 300,000", none, &Runs::write_times, 0.1, no_target},
    {"timestamps: open, read", none, &Runs::read_times, 0.1, no_target},
    {"nanoseconds: write 1,000,000", none, &Runs::write_nanoseconds, 2, no_target},
    {"nanoseconds: open, read", none, &Runs::read_nanoseconds, 2, no_target},
};

constexpr Contender contender_list[] = {
    {"library", library_runs}, {"limit", limit_runs}, {"HDF5", hdf5_runs}};

using Seconds = std::array<double, std::size(contender_list)>;

/** Each contender's time in one round; 0 for one without such a run. */
Seconds run_round(const Workload& workload, Series& series)
{
    Seconds seconds{};
    for (std::size_t i = 0; i != seconds.size(); ++i) {
        const Run run = contender_list[i].runs.*workload.run;
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
        values.reserve(rounds.size());
        for (const Seconds& round : rounds) values.push_back(round[i]);
        result[i] = median(values);
    }
    return result;
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

}  // namespace

const std::span<const Workload> workloads = workload_list;
const std::span<const Contender> contenders = contender_list;

void print_comparison()
{
    std::printf(
        "\nMedian times of 5 to 21 rounds. The limit is bare stdio moving the same bytes; for\n"
        "random ranges `pread`, for timestamps one `mktime` or `localtime` call for each value,\n"
        "for single doubles `push_back` to a `std::vector`. Ratios are the library's time to the\n"
        "other's; the target is the highest acceptable one. HDF5 reads one channel when it opens,\n"
        "and stores nanoseconds as 64-bit integers: 8 MB instead of 16 MB.\n\n"
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

}  // namespace bench
