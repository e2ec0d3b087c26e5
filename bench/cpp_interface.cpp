// What reading through the C++ interface costs, compared with the C functions.
#include <span>
#include <tdms.hpp>
#include <vector>

#include "library.h"
#include "tables.h"

namespace bench {
namespace {

double read_ranges_in_cpp(workload_data& series)
{
    const tdms::file file(library_file(series));
    const std::vector<tdms::channel> channels = file.groups().front().channels();
    return timed_ranges(series, [&](const random_range& range, double* target) {
        channels[range.channel].read<double>(range.first, std::span(target, random_range::length));
    });
}

}  // namespace

void print_cpp_ratio()
{
    workload_data series(workload_shape{"ranges", 16, 1000, 500});
    std::vector<double> in_c(21);
    std::vector<double> in_cpp(in_c.size());
    for (std::size_t i = 0; i != in_c.size(); ++i) {
        in_c[i] = read_ranges(series);
        in_cpp[i] = read_ranges_in_cpp(series);
    }
    print_ratio("10,000 ranges of 1000 doubles by `tdms::channel::read`", median(in_cpp),
                "`tdms_read_double`", median(in_c), 1.05);
}

}  // namespace bench
