#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "files/input.h"

namespace tool {

struct channel_statistics {
    std::uint64_t nan = 0;
    // Of the values that are not NaN, in their type; of strings the lengths in bytes of the
    // shortest and the longest. std::monostate if there are none.
    tdms::property_value minimum;
    tdms::property_value maximum;
    std::optional<double> mean;       // of numbers; for bool the share of true
    std::optional<double> deviation;  // the standard deviation of a sample (n - 1)
    bool ascending = true;            // of times
    double largest_step = 0;          // between times, in seconds
    std::string failure;              // why the values cannot be read; empty if they can
};

/// The times of a group's samples.
struct sample_times {
    double duration() const;

    /// The average number of samples per second; none if the times do not determine it.
    std::optional<double> rate() const;

    /// Whether no step between times is much longer than the average.
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
    std::vector<group_statistics> groups;  // in the order of the file, like their channels
    std::uint64_t size;
    std::optional<tdms::time> first;
    std::optional<tdms::time> last;
};

/// Reads all values of a file. If a channel cannot be read, its statistics have the reason.
file_statistics statistics_of(const input& from, const tdms::file& file);

/// The seconds from one time to a later one.
double seconds_between(tdms::time first, tdms::time last);

}  // namespace tool
