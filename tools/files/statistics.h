#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "files/input.h"
#include "files/measurement_file.h"

namespace tool {

struct channel_statistics {
    std::uint64_t nan = 0;
    // Of the values but NaN, in their type; of strings the shortest and the longest length in
    // bytes. std::monostate if there are none.
    tdms::property_value minimum;
    tdms::property_value maximum;
    std::optional<double> mean;       // of numbers; of bool the share of true
    std::optional<double> deviation;  // the standard deviation of a sample, by n - 1
    bool ascending = true;            // of times
    double largest_step = 0;          // between times, in seconds
    std::string failure;              // why the values cannot be read; empty if they can
};

/// The times of a group's samples.
struct sample_times {
    double duration() const;

    /// The samples per second on average; none if the times do not determine it.
    std::optional<double> rate() const;

    /// Whether all steps between times are about as long as the average.
    bool is_even() const;

    std::string channel;
    std::uint64_t count;
    tdms::time first;
    tdms::time last;
    bool ascending;
    double largest_step;  // in seconds
};

struct group_statistics {
    std::vector<channel_statistics> channels;
    std::optional<sample_times> times;
};

struct file_statistics {
    std::vector<group_statistics> groups;  // in the file's order, as their channels
    std::uint64_t size;
    std::optional<tdms::time> first;
    std::optional<tdms::time> last;
};

/// Reads all values of a file. A channel that cannot be read says so, and the others are read.
file_statistics statistics_of(const input& from, const tdms::file& file);

/// The seconds from one time to a later one.
double seconds_between(tdms::time first, tdms::time last);

}  // namespace tool
