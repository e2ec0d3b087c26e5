// How much memory this library takes beyond the caller's arrays.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tables.h"
#include "workloads.h"

namespace bench {
namespace {

double peak_mib()
{
    rusage usage{};
    require(getrusage(RUSAGE_SELF, &usage) == 0, "getrusage");
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// The memory that a run takes beyond the arrays, which exist before it. A failure ends the process.
double growth_mib(run_function run) noexcept
{
    workload_data series(bulk);
    const double before = peak_mib();
    run(series);
    return peak_mib() - before;
}

// A peak never falls, so each run gets a process of its own.
double growth_in_child(run_function run)
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

}  // namespace

void print_memory()
{
    struct memory_row {
        const char* name;
        run_function run;
        double target;
    };
    constexpr double slack = 4;
    constexpr std::size_t bytes = bulk.channels * bulk.values * sizeof(double);
    constexpr double values = static_cast<double>(bytes) / mebi;
    const memory_row rows[] = {
        {"bulk write by set_channel_data + save_file", library_runs.write, values + slack},
        {"bulk write by tdms_append + tdms_save", library_runs.append_and_save, values + slack},
        {"bulk read", library_runs.read, slack}};
    std::printf(
        "\nPeak memory beyond the caller's arrays. Writing takes the staged values.\n\n"
        "| run | peak | target | reached |\n| --- | --: | --: | --- |\n");
    std::fflush(stdout);  // or each child would print it again
    for (const memory_row& row : rows) {
        const double mib = growth_in_child(row.run);
        std::printf("| %s | %.1f MiB | %.0f MiB | %s |\n", row.name, mib, row.target,
                    verdict(mib <= row.target));
        std::fflush(stdout);
    }
}

}  // namespace bench
