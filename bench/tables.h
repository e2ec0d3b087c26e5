/** The tables about this library alone, and what all tables share. */
#ifndef TDMS_BENCH_TABLES_H
#define TDMS_BENCH_TABLES_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace bench {

void print_memory();
/** How opening grows with the file. */
void print_opening();
/** What must cost the same, or nearly. */
void print_ratios();
/** One row of that table: reading ranges through tdms.hpp. */
void print_cpp_ratio();
/** One row, of two times in seconds and the highest acceptable ratio. */
void print_ratio(const char* first, double first_seconds, const char* second, double second_seconds,
                 double highest);

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** In bold where the target is missed. */
inline const char* verdict(bool reached)
{
    return reached ? "yes" : "**no**";
}

}  // namespace bench

#endif
