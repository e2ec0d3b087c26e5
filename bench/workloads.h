#pragma once

// The data of the workloads, and how each contender carries them out.
//
// A run does its work once and returns the seconds that it took. These do not include preparing and
// checking: a file to read is created if it is missing, and every value that was read is compared
// with the one that was written.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tdms.h"

namespace bench {

/// Channels of doubles, all of one length, and the number of saves.
struct workload_shape {
    const char* name = "";
    std::size_t channels = 0;
    std::size_t values = 0;  // of one channel in one save
    std::size_t saves = 0;
};

constexpr std::size_t mebi = std::size_t{1024} * 1024;
constexpr workload_shape bulk{"bulk", 8, 2 * mebi, 1};

/// The caller's arrays for a shape: the values that each save writes, and room for all that are
/// read.
class workload_data : public workload_shape {
  public:
    explicit workload_data(const workload_shape& shape);

    std::string file(const char* extension) const;
    const double* source(std::size_t channel) const { return &source_[channel * values]; }
    double* target(std::size_t channel, std::size_t save = 0)
    {
        return &target_[(channel * saves + save) * values];
    }
    /// Clears what an earlier run has read.
    void clear();
    /// Throws unless the first channels' targets hold the source, once for each save.
    void verify(std::size_t count) const;

  private:
    std::vector<double> source_;
    std::vector<double> target_;
};

using run_function = double (*)(workload_data&);

/// The runs of a contender; null for workloads that it does not carry out.
struct contender_runs {
    run_function write = nullptr;            // this library uses the first interface
    run_function append_and_save = nullptr;  // the same through the tdms_ interface
    run_function append_singly = nullptr;    // without opening, saving and closing
    run_function open = nullptr;
    run_function read = nullptr;         // with opening
    run_function read_opened = nullptr;  // without opening
    run_function read_ranges = nullptr;  // without opening
    run_function write_strings = nullptr;
    run_function read_strings = nullptr;
    run_function write_times = nullptr;
    run_function read_times = nullptr;
    run_function write_nanoseconds = nullptr;
    run_function read_nanoseconds = nullptr;
};

extern const contender_runs library_runs;
/// Bare stdio moving the same bytes; for ranges `pread`, for timestamps one C library call for each
/// value, for single values `std::vector`.
extern const contender_runs limit_runs;
/// All null in a build without HDF5.
extern const contender_runs hdf5_runs;

template <class Work>
double timed(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// `length` values of one channel.
struct random_range {
    static constexpr std::size_t length = 1000;

    std::size_t channel = 0;
    std::size_t first = 0;
};

/// 10,000 random ranges of a series, the same in every run.
std::vector<random_range> random_ranges(const workload_data& series);
/// Throws unless these are the range's values.
void verify_range(const workload_data& series, const random_range& range,
                  const std::vector<double>& values);

/// Reads random ranges by `read(range, target)` into one array, as a program does that needs them
/// one after the other, and once more to compare them. The first read of each channel is not timed,
/// since it may have to locate the values.
template <class Read>
double timed_ranges(const workload_data& series, const Read& read)
{
    const std::vector<random_range> ranges = random_ranges(series);
    std::vector<double> values(random_range::length);
    for (std::size_t i = 0; i != series.channels; ++i) read(random_range{i, 0}, values.data());
    const double seconds = timed([&] {
        for (const random_range& range : ranges) read(range, values.data());
    });
    for (const random_range& range : ranges) {
        values.assign(values.size(), -1);
        read(range, values.data());
        verify_range(series, range, values);
    }
    return seconds;
}

/// Throws if something failed: a contender that fails must not win.
void require(bool success, const char* what);

/// A path in the scratch folder, which is removed with all its files when the program ends.
std::string scratch(const std::string& name);
bool exists(const std::string& path);
/// Removes the file at a path, so that a run does not pay for truncating it. @return the path
const std::string& vacated(const std::string& path);

/// Padded with zeros, so that the order of creation is the order of the paths.
std::string channel_name(std::size_t index);

/// 10 to 18 characters each, and their addresses.
const std::vector<std::string>& strings();
const std::vector<const char*>& string_pointers();
/// Compares what was read.
template <class Pointer>
void verify_strings(const std::vector<Pointer>& read)
{
    require(std::vector<std::string>(read.begin(), read.end()) == strings(),
            "reading strings back");
}

/// 100 timestamps per second, on a day without daylight saving.
const std::vector<timestamp_fields>& timestamps();

/// A million times since 1970, about a millisecond apart.
const std::vector<std::int64_t>& nanoseconds();

/// Files of this library, created if they are missing.
std::string library_file(const workload_data& series);
std::string library_string_file();
std::string library_nanosecond_file();

}  // namespace bench
