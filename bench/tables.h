#pragma once

// The tables about this library alone, and helpers for all tables.

#include <algorithm>
#include <cstddef>
#include <vector>

namespace bench {

void print_memory();
/// How opening grows with the file.
void print_opening();
/// A table of operations that must take about the same time.
void print_ratios();
/// A row of that table: reading ranges through tdms.hpp.
void print_cpp_ratio();
/// A row of that table.
/// @param highest the highest acceptable ratio
void print_ratio(const char* first, double first_seconds, const char* second, double second_seconds,
                 double highest);

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Whether a target was reached; in bold if not.
inline const char* verdict(bool reached)
{
    return reached ? "yes" : "**no**";
}

}  // namespace bench
