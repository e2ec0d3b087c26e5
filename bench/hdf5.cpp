// The workloads with HDF5, as its users write them.
#include "workloads.h"

#ifndef TDMS_BENCH_HDF5

const bench::contender_runs bench::hdf5_runs{};

#else

#include <hdf5.h>

#include <algorithm>
#include <utility>

namespace bench {
namespace {

void check(herr_t status)
{
    require(status >= 0, "HDF5");
}

// HDF5 keeps freed memory in lists of its own. Scattered over the heap, it would slow down the next
// contender, so it is returned.
template <class Work>
double timed_alone(const Work& work)
{
    const double seconds = timed(work);
    check(H5garbage_collect());
    return seconds;
}

// An identifier with the function that releases it.
class hdf5_id {
  public:
    hdf5_id(hid_t id, herr_t (*close)(hid_t)) : id_(id), close_(close) { require(id >= 0, "HDF5"); }
    hdf5_id(hdf5_id&& other) noexcept : id_(std::exchange(other.id_, -1)), close_(other.close_) {}
    hdf5_id& operator=(hdf5_id&&) = delete;
    ~hdf5_id()
    {
        if (id_ >= 0) close_(id_);
    }
    operator hid_t() const { return id_; }

  private:
    hid_t id_;
    herr_t (*close_)(hid_t);
};

hdf5_id create(const std::string& path)
{
    return {H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), H5Fclose};
}

hdf5_id open(const std::string& path)
{
    return {H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT), H5Fclose};
}

hdf5_id extent(hsize_t size, hsize_t limit)
{
    return {H5Screate_simple(1, &size, &limit), H5Sclose};
}

hdf5_id create_dataset(hid_t file, std::size_t index, hid_t type, hid_t space, hid_t properties)
{
    const std::string name = channel_name(index);
    return {H5Dcreate2(file, name.c_str(), type, space, H5P_DEFAULT, properties, H5P_DEFAULT),
            H5Dclose};
}

hdf5_id open_dataset(hid_t file, std::size_t index)
{
    return {H5Dopen2(file, channel_name(index).c_str(), H5P_DEFAULT), H5Dclose};
}

void read_dataset(hid_t file, std::size_t index, hid_t type, void* target)
{
    const hdf5_id set = open_dataset(file, index);
    check(H5Dread(set, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, target));
}

// All values at once: contiguous datasets.
void write_contiguous(hid_t file, const workload_data& series)
{
    const hdf5_id space = extent(series.values, series.values);
    for (std::size_t i = 0; i != series.channels; ++i) {
        const hdf5_id set = create_dataset(file, i, H5T_NATIVE_DOUBLE, space, H5P_DEFAULT);
        check(H5Dwrite(set, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, series.source(i)));
    }
}

std::vector<hdf5_id> create_growing(hid_t file, const workload_data& series)
{
    const hsize_t chunk = std::min<hsize_t>(series.values * series.saves, 1000);
    const hdf5_id properties(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
    check(H5Pset_chunk(properties, 1, &chunk));
    const hdf5_id space = extent(0, H5S_UNLIMITED);
    std::vector<hdf5_id> sets;
    for (std::size_t i = 0; i != series.channels; ++i) {
        sets.push_back(create_dataset(file, i, H5T_NATIVE_DOUBLE, space, properties));
    }
    return sets;
}

void append(hid_t set, hid_t memory, hsize_t written, hsize_t count, const double* source)
{
    const hsize_t size = written + count;
    check(H5Dset_extent(set, &size));
    const hdf5_id space(H5Dget_space(set), H5Sclose);
    check(H5Sselect_hyperslab(space, H5S_SELECT_SET, &written, nullptr, &count, nullptr));
    check(H5Dwrite(set, H5T_NATIVE_DOUBLE, memory, space, H5P_DEFAULT, source));
}

void write_growing(hid_t file, const workload_data& series)
{
    const std::vector<hdf5_id> sets = create_growing(file, series);
    const hdf5_id memory = extent(series.values, series.values);
    for (std::size_t save = 0; save != series.saves; ++save) {
        for (std::size_t i = 0; i != series.channels; ++i) {
            append(sets[i], memory, save * series.values, series.values, series.source(i));
        }
    }
}

double write(workload_data& series)
{
    const std::string path = vacated(series.file(".h5"));
    return timed_alone([&] {
        const hdf5_id file = create(path);
        series.saves == 1 ? write_contiguous(file, series) : write_growing(file, series);
    });
}

// Opens the file and reads its first channels.
double read_channels(workload_data& series, std::size_t count)
{
    const std::string path = series.file(".h5");
    if (!exists(path)) write(series);
    series.clear();
    const double seconds = timed_alone([&] {
        const hdf5_id file = open(path);
        for (std::size_t i = 0; i != count; ++i) {
            read_dataset(file, i, H5T_NATIVE_DOUBLE, series.target(i));
        }
    });
    series.verify(count);
    return seconds;
}

double read(workload_data& series)
{
    return read_channels(series, series.channels);
}

// Opening alone reads nothing: HDF5 finds the description of a channel when the channel is read.
double open_and_read_one(workload_data& series)
{
    return read_channels(series, 1);
}

double read_ranges(workload_data& series)
{
    const std::string path = series.file(".h5");
    if (!exists(path)) write(series);
    const hdf5_id file = open(path);
    const hdf5_id memory = extent(random_range::length, random_range::length);
    std::vector<hdf5_id> sets;
    std::vector<hdf5_id> spaces;
    for (std::size_t i = 0; i != series.channels; ++i) {
        sets.push_back(open_dataset(file, i));
        spaces.emplace_back(H5Dget_space(sets[i]), H5Sclose);
    }
    const double seconds = timed_ranges(series, [&](const random_range& range, double* target) {
        const hid_t set = sets[range.channel];
        const hid_t space = spaces[range.channel];
        const hsize_t first = range.first;
        const hsize_t count = random_range::length;
        check(H5Sselect_hyperslab(space, H5S_SELECT_SET, &first, nullptr, &count, nullptr));
        check(H5Dread(set, H5T_NATIVE_DOUBLE, memory, space, H5P_DEFAULT, target));
    });
    check(H5garbage_collect());
    return seconds;
}

// A file of one contiguous dataset.
double write_dataset(const std::string& path, hid_t type, std::size_t count, const void* source)
{
    vacated(path);
    const hdf5_id space = extent(count, count);
    return timed_alone([&] {
        const hdf5_id file = create(path);
        const hdf5_id set = create_dataset(file, 0, type, space, H5P_DEFAULT);
        check(H5Dwrite(set, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, source));
    });
}

hdf5_id string_type()
{
    hdf5_id type(H5Tcopy(H5T_C_S1), H5Tclose);
    check(H5Tset_size(type, H5T_VARIABLE));
    return type;
}

double write_strings(workload_data&)
{
    return write_dataset(scratch("strings.h5"), string_type(), strings().size(),
                         string_pointers().data());
}

// Releasing the strings is not timed, since this library keeps its own.
double read_strings(workload_data& none)
{
    const std::string path = scratch("strings.h5");
    if (!exists(path)) write_strings(none);
    const hdf5_id type = string_type();
    std::vector<char*> read(strings().size());
    const double seconds = timed_alone([&] { read_dataset(open(path), 0, type, read.data()); });
    verify_strings(read);
    check(H5Dvlen_reclaim(type, extent(read.size(), read.size()), H5P_DEFAULT, read.data()));
    return seconds;
}

// Stored as 64-bit integers, which are half as long as timestamps.
double write_nanoseconds(workload_data&)
{
    return write_dataset(scratch("nanoseconds.h5"), H5T_NATIVE_INT64, nanoseconds().size(),
                         nanoseconds().data());
}

double read_nanoseconds(workload_data& none)
{
    const std::string path = scratch("nanoseconds.h5");
    if (!exists(path)) write_nanoseconds(none);
    std::vector<std::int64_t> read(nanoseconds().size());
    const double seconds =
        timed_alone([&] { read_dataset(open(path), 0, H5T_NATIVE_INT64, read.data()); });
    require(read == nanoseconds(), "reading nanoseconds back");
    return seconds;
}

}  // namespace

const contender_runs hdf5_runs{.write = write,
                               .append_and_save = write,
                               .open = open_and_read_one,
                               .read = read,
                               .read_ranges = read_ranges,
                               .write_strings = write_strings,
                               .read_strings = read_strings,
                               .write_nanoseconds = write_nanoseconds,
                               .read_nanoseconds = read_nanoseconds};

}  // namespace bench

#endif
