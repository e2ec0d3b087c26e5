// The workloads with the tdms_ interface of this library.
#include "library.h"

namespace bench {
namespace {

// Reads a file of one save back, and compares it.
void verify_file(const std::string& path, workload_data& series)
{
    const library_handle file(tdms_interface, path, "r");
    const std::vector<void*> channels = file.channels();
    require(channels.size() == series.channels, "reading channels back");
    series.clear();
    for (std::size_t i = 0; i != channels.size(); ++i) {
        check(tdms_read_double(channels[i], 0, series.values, series.target(i)));
    }
    series.verify(series.channels);
}

}  // namespace

double append_and_save(workload_data& series)
{
    const std::string path = vacated(series.file(".appended.tdms"));
    const double seconds = timed([&] {
        library_handle file(tdms_interface, path, "w");
        const std::vector<void*> channels = file.create_channels(series.channels);
        for (std::size_t i = 0; i != channels.size(); ++i) {
            check(tdms_append_double(channels[i], series.values, series.source(i)));
        }
        file.save();
        file.close();
    });
    verify_file(path, series);
    return seconds;
}

double append_singly(workload_data& series)
{
    const std::string path = vacated(series.file(".tdms"));
    library_handle file(tdms_interface, path, "w");
    void* channel = file.create_channels(1).front();
    const double* source = series.source(0);
    const double seconds = timed([&] {
        for (std::size_t i = 0; i != series.values; ++i) {
            check(tdms_append_double(channel, 1, &source[i]));
        }
    });
    file.save();
    file.close();
    verify_file(path, series);
    return seconds;
}

double read_ranges(workload_data& series)
{
    const library_handle file(tdms_interface, library_file(series), "r");
    const std::vector<void*> channels = file.channels();
    return timed_ranges(series, [&](const random_range& range, double* target) {
        check(tdms_read_double(channels[range.channel], range.first, random_range::length, target));
    });
}

double write_nanoseconds(workload_data&)
{
    const std::string path = vacated(scratch("nanoseconds.tdms"));
    return timed([&] {
        library_handle file(tdms_interface, path, "w");
        void* channel = file.create_channels(1).front();
        check(tdms_append_nanoseconds(channel, nanoseconds().size(), nanoseconds().data()));
        file.save();
        file.close();
    });
}

double read_nanoseconds(workload_data&)
{
    const std::string path = library_nanosecond_file();
    std::vector<std::int64_t> read(nanoseconds().size());
    const double seconds = timed([&] {
        const library_handle file(tdms_interface, path, "r");
        check(tdms_read_nanoseconds(file.channels().front(), 0, read.size(), read.data()));
    });
    require(read == nanoseconds(), "reading nanoseconds back");
    return seconds;
}

std::string library_nanosecond_file()
{
    workload_data none({});
    std::string path = scratch("nanoseconds.tdms");
    if (!exists(path)) write_nanoseconds(none);
    return path;
}

}  // namespace bench
