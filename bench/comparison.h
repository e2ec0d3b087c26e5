#pragma once

// The workloads with their targets, and the contenders that carry them out in turn.

#include <span>

#include "workloads.h"

namespace bench {

struct workload_entry {
    const char* name;
    workload_shape shape;
    run_function contender_runs::*run;
    double of_limit;  // the highest acceptable ratio to the limit's time
    double of_hdf5;   // the same to HDF5's
};

struct contender_entry {
    const char* name;
    const contender_runs& runs;
};

extern const std::span<const workload_entry> workloads;
extern const std::span<const contender_entry> contenders;

void print_comparison();

}  // namespace bench
