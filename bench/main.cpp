// Compares this library with HDF5 and with bare stdio.
//
// Without arguments it prints tables in Markdown: medians over rounds in which the contenders take
// turns, so that whatever else the machine does affects all of them. With arguments it performs the
// same runs under Google Benchmark and passes it the arguments. `--without-huge-pages` disables
// transparent huge pages in both cases.
#include <benchmark/benchmark.h>
#include <sys/prctl.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "comparison.h"
#include "tables.h"

namespace {

using namespace bench;

// Child processes inherit the setting.
void disable_huge_pages()
{
    require(prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0) == 0, "disabling huge pages");
}

void print_tables(bool huge_pages)
{
    if (!huge_pages) std::printf("\nTransparent huge pages are disabled for these runs.\n");
    scratch("");  // creates the folder here, not in a child process
    print_memory();
    print_comparison();
    print_opening();
    print_ratios();
}

void register_run(const workload_entry& workload, const contender_entry& contender)
{
    const run_function run = contender.runs.*workload.run;
    if (run == nullptr) return;
    const auto measure = [run, shape = workload.shape](benchmark::State& state) {
        workload_data series(shape);
        for ([[maybe_unused]] auto _ : state) state.SetIterationTime(run(series));
    };
    const std::string name = std::string(workload.name) + "/" + contender.name;
    benchmark::RegisterBenchmark(name.c_str(), measure)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void run_google_benchmark(bool huge_pages, int count, char** arguments)
{
    if (!huge_pages) benchmark::AddCustomContext("transparent huge pages", "disabled");
    for (const workload_entry& workload : workloads) {
        for (const contender_entry& contender : contenders) register_run(workload, contender);
    }
    benchmark::Initialize(&count, arguments);
    require(!benchmark::ReportUnrecognizedArguments(count, arguments), "reading the arguments");
    benchmark::RunSpecifiedBenchmarks();
}

// Removes an option from the arguments. @return whether it was there
bool take_option(std::string_view option, int& count, char** arguments)
{
    char** const end = arguments + count;
    char** const rest = std::remove(arguments + 1, end, option);
    *rest = nullptr;  // as main() gets it
    count = static_cast<int>(rest - arguments);
    return rest != end;
}

}  // namespace

int main(int count, char** arguments)
{
    try {
        const bool huge_pages = !take_option("--without-huge-pages", count, arguments);
        if (!huge_pages) disable_huge_pages();
        if (count > 1) {
            run_google_benchmark(huge_pages, count, arguments);
        } else {
            print_tables(huge_pages);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tdms_bench: %s\n", error.what());
        return 1;
    }
}
