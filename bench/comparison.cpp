#include "comparison.h"

#include <array>
#include <cstdio>
#include <iterator>

#include "tables.h"

namespace bench {
namespace {

constexpr workload_shape stream{"stream", 16, 1000, 500};
constexpr workload_shape many{"many", 1, 10, 50'000};
constexpr workload_shape wide{"wide", 5000, 10, 20};
constexpr workload_shape single{"single", 1, 1'000'000, 1};
constexpr workload_shape none{};

constexpr double no_target = 0;

constexpr workload_entry workload_list[] = {
    {"bulk write: 8 channels of 2 Mi doubles, one save", bulk, &contender_runs::write, 1.75, 1.75},
    {"bulk write by tdms_append + tdms_save", bulk, &contender_runs::append_and_save, 1.75, 1.75},
    {"bulk read: open, read all 8", bulk, &contender_runs::read, 1.15, 1.1},
    {"stream write: 16 channels of 1000 doubles, 500 saves", stream, &contender_runs::write, 0.9,
     0.35},
    {"stream read: open, read all 16", stream, &contender_runs::read, 1.15, 0.65},
    {"random ranges of that file: 10,000 of 1000 doubles", stream, &contender_runs::read_ranges,
     1.15, 0.25},
    {"many segments: write 10 doubles, 50,000 saves", many, &contender_runs::write, 3, 0.05},
    {"many segments: open", many, &contender_runs::open, 0.18, no_target},
    {"many segments: read the channel", many, &contender_runs::read_opened, 0.3, no_target},
    {"wide: write 5000 channels of 10 doubles, 20 saves", wide, &contender_runs::write, 3, 0.05},
    {"wide: open", wide, &contender_runs::open, 3.2, 8},
    {"append one double at a time, a million", single, &contender_runs::append_singly, 6,
     no_target},
    {"strings: write 500,000", none, &contender_runs::write_strings, 2, 0.5},
    {"strings: open, read", none, &contender_runs::read_strings, 2.3, 0.5},
    {"timestamps: write 300,000", none, &contender_runs::write_times, 0.1, no_target},
    {"timestamps: open, read", none, &contender_runs::read_times, 0.1, no_target},
    {"nanoseconds: write 1,000,000", none, &contender_runs::write_nanoseconds, 2, no_target},
    {"nanoseconds: open, read", none, &contender_runs::read_nanoseconds, 2, no_target},
};

constexpr contender_entry contender_list[] = {
    {"library", library_runs}, {"limit", limit_runs}, {"HDF5", hdf5_runs}};

using round_seconds = std::array<double, std::size(contender_list)>;

// The time of each contender in one round; 0 for one without such a run.
round_seconds run_round(const workload_entry& workload, workload_data& series)
{
    round_seconds seconds{};
    for (std::size_t i = 0; i != seconds.size(); ++i) {
        const run_function run = contender_list[i].runs.*workload.run;
        if (run != nullptr) seconds[i] = run(series);
    }
    return seconds;
}

// At least five rounds, and more of the short ones.
std::vector<round_seconds> run_rounds(const workload_entry& workload)
{
    workload_data series(workload.shape);
    run_round(workload, series);  // not counted: it includes the setup of the libraries
    std::vector<round_seconds> rounds;
    for (double total = 0; rounds.size() < 5 || (rounds.size() < 21 && total < 8);)
        total += timed([&] { rounds.push_back(run_round(workload, series)); });
    return rounds;
}

round_seconds medians(const std::vector<round_seconds>& rounds)
{
    round_seconds result{};
    for (std::size_t i = 0; i != result.size(); ++i) {
        std::vector<double> values;
        values.reserve(rounds.size());
        for (const round_seconds& round : rounds) values.push_back(round[i]);
        result[i] = median(values);
    }
    return result;
}

void print_time(double seconds)
{
    if (seconds == 0) {
        std::printf(" - |");
    } else {
        std::printf(" %.4g ms |", seconds * 1e3);
    }
}

void print_ratio(double library, double other, double target)
{
    if (other == 0) {
        std::printf(" - |");
    } else {
        std::printf(" %.3g |", library / other);
    }
    if (target == no_target) {
        std::printf(" | |");
    } else {
        std::printf(" %g | %s |", target, other == 0 ? "-" : verdict(library <= target * other));
    }
}

}  // namespace

const std::span<const workload_entry> workloads = workload_list;
const std::span<const contender_entry> contenders = contender_list;

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
    for (const workload_entry& workload : workloads) {
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
