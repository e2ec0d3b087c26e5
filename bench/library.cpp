// The workloads with this library, as an acquisition program uses it: through the first interface,
// except for what only the tdms_ interface can do.
#include "library.h"

#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

void write_file(const workload_data& series, const std::string& path)
{
    library_handle file(first_interface, path, "w");
    const std::vector<void*> channels = file.create_channels(series.channels);
    for (std::size_t save = 0; save != series.saves; ++save) {
        for (std::size_t i = 0; i != channels.size(); ++i) {
            check(set_channel_data_double(channels[i], series.values, series.source(i)));
        }
        file.save();
    }
    file.close();
}

void read_channels(const std::vector<void*>& channels, workload_data& series)
{
    for (std::size_t i = 0; i != channels.size(); ++i) {
        check(get_channel_data_double(channels[i], series.target(i)));
    }
}

double write(workload_data& series)
{
    const std::string path = vacated(series.file(".tdms"));
    return timed([&] { write_file(series, path); });
}

double open(workload_data& series)
{
    const std::string path = library_file(series);
    return timed([&] { const library_handle file(first_interface, path, "r"); });
}

double read(workload_data& series)
{
    const std::string path = library_file(series);
    series.clear();
    const double seconds = timed([&] {
        library_handle file(first_interface, path, "r");
        read_channels(file.channels(), series);
    });
    series.verify(series.channels);
    return seconds;
}

double read_opened(workload_data& series)
{
    library_handle file(first_interface, library_file(series), "r");
    const std::vector<void*> channels = file.channels();
    series.clear();
    const double seconds = timed([&] { read_channels(channels, series); });
    series.verify(series.channels);
    return seconds;
}

// A file of one channel, whose values `stage` sets.
template <class Stage>
double write_channel(const std::string& path, const Stage& stage)
{
    return timed([&] {
        library_handle file(first_interface, path, "w");
        check(stage(file.create_channels(1).front()));
        file.save();
        file.close();
    });
}

double write_strings(workload_data&)
{
    return write_channel(vacated(scratch("strings.tdms")), [](void* channel) {
        return set_channel_data_string(channel, strings().size(), string_pointers().data());
    });
}

double read_strings(workload_data&)
{
    std::vector<const char*> read(strings().size());
    const std::string path = library_string_file();
    const double seconds = timed([&] {
        library_handle file(first_interface, path, "r");
        check(get_channel_data_string(file.channels().front(), read.data()));
    });
    verify_strings(read);
    return seconds;
}

double write_times(workload_data&)
{
    return write_channel(vacated(scratch("times.tdms")), [](void* channel) {
        return set_channel_data_timestamp(channel, timestamps().size(), timestamps().data());
    });
}

double read_times(workload_data& none)
{
    const std::string path = scratch("times.tdms");
    if (!exists(path)) write_times(none);
    std::vector<timestamp_fields> read(timestamps().size());
    const double seconds = timed([&] {
        library_handle file(first_interface, path, "r");
        check(get_channel_data_timestamp(file.channels().front(), read.data()));
    });
    const std::size_t size = read.size() * sizeof read[0];
    require(std::memcmp(read.data(), timestamps().data(), size) == 0, "reading timestamps back");
    return seconds;
}

}  // namespace

void check(int status)
{
    if (status < 0) throw std::runtime_error(tdms_status_text(status));
}

library_handle::library_handle(const interface_functions& functions, const std::string& path,
                               const char* mode)
    : functions_(functions)
{
    check(functions_.open(path.c_str(), mode, &file_));
}

std::vector<void*> library_handle::create_channels(std::size_t count)
{
    void* group = nullptr;
    check(functions_.create_group(file_, "group", &group));
    std::vector<void*> channels(count);
    for (std::size_t i = 0; i != count; ++i) {
        check(functions_.create_channel(group, channel_name(i).c_str(), &channels[i]));
    }
    return channels;
}

std::vector<void*> library_handle::channels() const
{
    void* group = nullptr;
    check(get_group(file_, &group));
    const int count = get_num_channel(group);
    check(count);
    std::vector<void*> list(static_cast<std::size_t>(count));
    check(get_channel(group, list.data()));
    return list;
}

std::string library_file(const workload_data& series)
{
    std::string path = series.file(".tdms");
    if (!exists(path)) write_file(series, path);
    return path;
}

std::string library_string_file()
{
    workload_data none({});
    std::string path = scratch("strings.tdms");
    if (!exists(path)) write_strings(none);
    return path;
}

const contender_runs library_runs{.write = write,
                                  .append_and_save = append_and_save,
                                  .append_singly = append_singly,
                                  .open = open,
                                  .read = read,
                                  .read_opened = read_opened,
                                  .read_ranges = read_ranges,
                                  .write_strings = write_strings,
                                  .read_strings = read_strings,
                                  .write_times = write_times,
                                  .read_times = read_times,
                                  .write_nanoseconds = write_nanoseconds,
                                  .read_nanoseconds = read_nanoseconds};

}  // namespace bench
