/**
 * The data of the workloads, and the contenders' ways to carry them out.
 *
 * A run does its work once and returns the seconds that it took. Preparing and checking lie outside
 * of that time: a file to read is made when it is missing, and every value that was read is
 * compared with the one written.
 */
#ifndef TDMS_BENCH_WORKLOADS_H
#define TDMS_BENCH_WORKLOADS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tdms.h"

namespace bench {

/** Equally long channels of doubles, saved a number of times. */
struct Shape {
    const char* name = "";
    std::size_t channels = 0;
    std::size_t values = 0;  // of one channel in one save
    std::size_t saves = 0;
};

constexpr std::size_t mebi = std::size_t{1024} * 1024;
constexpr Shape bulk{"bulk", 8, 2 * mebi, 1};

/** The caller's arrays for a shape: what each save writes, and room for all that is read. */
class Series : public Shape {
  public:
    explicit Series(const Shape& shape);

    std::string file(const char* extension) const;
    const double* source(std::size_t channel) const { return &source_[channel * values]; }
    double* target(std::size_t channel, std::size_t save = 0)
    {
        return &target_[(channel * saves + save) * values];
    }
    /** Wipes what an earlier run has read. */
    void clear();
    /** Throws unless the first channels' targets hold the source, once for each save. */
    void verify(std::size_t count) const;

  private:
    std::vector<double> source_;
    std::vector<double> target_;
};

using Run = double (*)(Series&);

/** One contender's runs; those that it has no part in stay null. */
struct Runs {
    Run write = nullptr;            // for this library by the first interface
    Run append_and_save = nullptr;  // the same by the tdms_ interface
    Run append_singly = nullptr;    // without opening, saving and closing
    Run open = nullptr;
    Run read = nullptr;         // with opening
    Run read_opened = nullptr;  // without
    Run read_ranges = nullptr;  // without
    Run write_strings = nullptr;
    Run read_strings = nullptr;
    Run write_times = nullptr;
    Run read_times = nullptr;
    Run write_nanoseconds = nullptr;
    Run read_nanoseconds = nullptr;
};

extern const Runs library_runs;
/**
 * Bare stdio moving the same bytes; for ranges `pread`, for timestamps one C library call for each
 * value, for single values `std::vector`.
 */
extern const Runs limit_runs;
/** All null in a build without HDF5. */
extern const Runs hdf5_runs;

template <class Work>
double timed(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/** `length` values of one channel. */
struct Range {
    static constexpr std::size_t length = 1000;

    std::size_t channel = 0;
    std::size_t first = 0;
};

/** 10,000 ranges from anywhere in a series, the same in every run. */
std::vector<Range> random_ranges(const Series& series);
/** Throws unless these are the range's values. */
void verify_range(const Series& series, const Range& range, const std::vector<double>& values);

/**
 * Reads random ranges by `read(range, target)` into one array, as a program does that looks at one
 * after the other, and once more to compare them. The first read of each channel is not timed,
 * since it may have to locate the values.
 */
template <class Read>
double timed_ranges(const Series& series, const Read& read)
{
    const std::vector<Range> ranges = random_ranges(series);
    std::vector<double> values(Range::length);
    for (std::size_t i = 0; i != series.channels; ++i) read(Range{i, 0}, values.data());
    const double seconds = timed([&] {
        for (const Range& range : ranges) read(range, values.data());
    });
    for (const Range& range : ranges) {
        values.assign(values.size(), -1);
        read(range, values.data());
        verify_range(series, range, values);
    }
    return seconds;
}

/** Throws when something failed, for a contender that fails must not win. */
void require(bool success, const char* what);

/** A path in the scratch folder, which goes with everything in it when the program ends. */
std::string scratch(const std::string& name);
bool exists(const std::string& path);
/** The same path, with the file there removed: a run must not pay for dropping an older one. */
const std::string& vacated(const std::string& path);

/** Padded, so that the order of creation is the order of the paths. */
std::string channel_name(std::size_t index);

/** 10 to 18 characters each, and their addresses. */
const std::vector<std::string>& strings();
const std::vector<const char*>& string_pointers();
/** Compares what was read. */
template <class Pointer>
void verify_strings(const std::vector<Pointer>& read)
{
    require(std::vector<std::string>(read.begin(), read.end()) == strings(),
            "reading strings back");
}

/** 100 timestamps to a second, on a day without summer time. */
const std::vector<timestamp_fields>& timestamps();

/** A million times since 1970, about a millisecond apart. */
const std::vector<std::int64_t>& nanoseconds();

/** Files of this library, made when they are missing. */
std::string library_file(const Series& series);
std::string library_string_file();
std::string library_nanosecond_file();

}  // namespace bench

#endif
