// rms: the program of ../rms.cpp for HDF5 files.
//
//     rms FILE GROUP CHANNEL [RATE]
//
// The dataset "time" and the attribute "start" hold nanoseconds since 1970-01-01T00:00:00Z. Files
// in single-writer mode (SWMR) can be read while they are recorded.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "../support/conversions.hpp"
#include "../support/exit_status.hpp"
#include "../support/hdf5.hpp"
#include "../support/rms_of_seconds.hpp"

namespace {

constexpr hsize_t at_once = 65536;

// Files in older formats have no single-writer mode.
h5::id open_file(const char* path)
{
    const hid_t file = H5Fopen(path, H5F_ACC_RDONLY | H5F_ACC_SWMR_READ, H5P_DEFAULT);
    return {file >= 0 ? file : H5Fopen(path, H5F_ACC_RDONLY, H5P_DEFAULT), path};
}

template <class T>
T inherited(std::initializer_list<hid_t> objects, const char* name, hid_t type, T otherwise)
{
    for (const hid_t object : objects) {
        if (h5::check(H5Aexists(object, name), name) == 0) continue;
        const h5::id attribute(H5Aopen(object, name, H5P_DEFAULT), name);
        h5::check(H5Aread(attribute, type, &otherwise), name);
        break;
    }
    return otherwise;
}

void read(hid_t dataset, hid_t type, hsize_t first, hsize_t count, void* values)
{
    const h5::id source(H5Dget_space(dataset), "dataspace");
    h5::check(H5Sselect_hyperslab(source, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
              "range");
    const h5::id target(H5Screate_simple(1, &count, nullptr), "dataspace");
    h5::check(H5Dread(dataset, type, target, source, H5P_DEFAULT, values), "values");
}

void print_rms(const char* path, const char* group, const char* name, double given_rate)
{
    const h5::id f = open_file(path);
    const h5::id g(H5Gopen2(f, group, H5P_DEFAULT), std::string(path) + ": " + group);
    const h5::id c(H5Dopen2(g, name, H5P_DEFAULT), std::string(path) + ": " + group + '/' + name);
    std::optional<h5::id> time;
    if (h5::check(H5Lexists(g, "time", H5P_DEFAULT), path) > 0) {
        time.emplace(H5Dopen2(g, "time", H5P_DEFAULT), "time");
    }
    const double rate =
        given_rate > 0 ? given_rate : inherited({c, g, f}, "sampling rate", H5T_NATIVE_DOUBLE, 0.0);
    const moment start(
        std::chrono::nanoseconds(inherited({c, g, f}, "start", H5T_NATIVE_INT64, std::int64_t(0))));
    if (!time && !(rate > 0)) {
        throw std::runtime_error(std::string(path) + ": no time and no sampling rate");
    }

    std::vector<double> values(at_once);
    std::vector<std::int64_t> times(at_once);
    rms_of_seconds rms;
    const h5::id space(H5Dget_space(c), name);
    const auto size = static_cast<hsize_t>(h5::check(H5Sget_simple_extent_npoints(space), name));
    for (hsize_t first = 0; first < size; first += at_once) {
        const hsize_t count = std::min(at_once, size - first);
        read(c, H5T_NATIVE_DOUBLE, first, count, values.data());
        if (time) read(*time, H5T_NATIVE_INT64, first, count, times.data());
        for (std::size_t i = 0; i != count; ++i) {
            rms.add(
                time ? moment(std::chrono::nanoseconds(times[i])) : start + after(first + i, rate),
                values[i]);
        }
    }
    rms.print();
    if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("rms", [&] {
        h5::be_silent();
        if (argc < 4 || argc > 5) {
            throw std::invalid_argument("usage: rms FILE GROUP CHANNEL [RATE]");
        }
        print_rms(argv[1], argv[2], argv[3], argc > 4 ? to_number<double>(argv[4]) : 0);
    });
}
