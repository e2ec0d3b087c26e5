/** The workloads with their targets, and the contenders that take turns at them. */
#ifndef TDMS_BENCH_COMPARISON_H
#define TDMS_BENCH_COMPARISON_H

#include <span>

#include "workloads.h"

namespace bench {

struct Workload {
    const char* name;
    Shape shape;
    Run Runs::*run;
    double of_limit;  // the highest acceptable ratio to the limit's time
    double of_hdf5;   // the same to HDF5's
};

struct Contender {
    const char* name;
    const Runs& runs;
};

extern const std::span<const Workload> workloads;
extern const std::span<const Contender> contenders;

void print_comparison();

}  // namespace bench

#endif
