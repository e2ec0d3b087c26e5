// The limit of each workload: bare stdio moving the same bytes between the caller's arrays and a
// file in calls of a natural size; for ranges `pread`, for timestamps the C library's conversion
// of each value, for single values `std::vector`.
//
// It reads this library's files. For doubles it writes as many bytes as this library, with zeros
// for the metadata; for strings and times it writes the values alone.
#include <benchmark/benchmark.h>
#include <endian.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "workloads.h"

namespace bench {
namespace {

constexpr std::size_t lead_in_size = 28;

class stdio_stream {
  public:
    stdio_stream(const std::string& path, const char* mode) : file_(std::fopen(path.c_str(), mode))
    {
        require(file_ != nullptr, "fopen");
    }
    stdio_stream(const stdio_stream&) = delete;
    stdio_stream& operator=(const stdio_stream&) = delete;
    ~stdio_stream() { std::fclose(file_); }

    void write(const void* bytes, std::size_t size)
    {
        require(std::fwrite(bytes, 1, size, file_) == size, "fwrite");
    }
    bool try_read(void* bytes, std::size_t size)
    {
        return std::fread(bytes, 1, size, file_) == size;
    }
    void read(void* bytes, std::size_t size) { require(try_read(bytes, size), "fread"); }
    void skip(std::uint64_t size)
    {
        require(std::fseek(file_, static_cast<long>(size), SEEK_CUR) == 0, "fseek");
    }
    std::uint64_t position() const
    {
        const long position = std::ftell(file_);
        require(position >= 0, "ftell");
        return static_cast<std::uint64_t>(position);
    }
    int descriptor() const { return fileno(file_); }

  private:
    std::FILE* file_;
};

// Uses the descriptor: the stream would fill its buffer each time.
void read_at(const stdio_stream& stream, std::uint64_t position, double* values, std::size_t count)
{
    const std::size_t size = count * sizeof *values;
    const ssize_t read = pread(stream.descriptor(), values, size, static_cast<off_t>(position));
    require(read == static_cast<ssize_t>(size), "pread");
}

std::uint64_t u64_at(const unsigned char* bytes)
{
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return le64toh(value);
}

// Calls `on_raw(stream, size)` for the raw data of each segment that has some.
template <class OnRaw>
void walk(const std::string& path, const OnRaw& on_raw)
{
    stdio_stream stream(path, "rb");
    unsigned char lead_in[lead_in_size];
    std::vector<unsigned char> metadata;
    while (stream.try_read(lead_in, sizeof lead_in)) {
        metadata.resize(u64_at(lead_in + 20));
        stream.read(metadata.data(), metadata.size());
        const std::uint64_t raw = u64_at(lead_in + 12) - metadata.size();
        if (raw != 0) on_raw(stream, raw);
    }
}

// The first segment of a save. Only in the first save does it list objects.
constexpr std::size_t first_size = lead_in_size + 4;

// The lead-in and the metadata of the second segment: each channel's path, index and number of
// properties.
std::size_t second_header_size(const workload_data& series)
{
    const std::size_t path = 4 + std::strlen("/'group'/''") + channel_name(0).size();
    return lead_in_size + 4 + series.channels * (path + 20 + 4);
}

// One call for each array; where the values are few, one for each complete segment.
double write(workload_data& series)
{
    const std::string path = vacated(series.file(".raw"));
    const std::size_t size = series.values * sizeof(double);
    const bool few = series.channels * size < BUFSIZ / 2;
    const std::vector<char> first(first_size);
    const std::vector<char> second(second_header_size(series) + (few ? series.channels * size : 0));
    return timed([&] {
        stdio_stream stream(path, "wb");
        for (std::size_t save = 0; save != series.saves; ++save) {
            stream.write(first.data(), first.size());
            stream.write(second.data(), second.size());
            for (std::size_t i = 0; !few && i != series.channels; ++i) {
                stream.write(series.source(i), size);
            }
        }
    });
}

double read(workload_data& series)
{
    const std::string path = library_file(series);
    const std::size_t size = series.values * sizeof(double);
    series.clear();
    const double seconds = timed([&] {
        std::size_t save = 0;
        walk(path, [&](stdio_stream& stream, std::uint64_t) {
            for (std::size_t i = 0; i != series.channels; ++i) {
                stream.read(series.target(i, save), size);
            }
            ++save;
        });
    });
    series.verify(series.channels);
    return seconds;
}

// Reads lead-ins and metadata, and seeks over the values.
double skim(workload_data& series)
{
    const std::string path = library_file(series);
    const auto skip = [](stdio_stream& stream, std::uint64_t size) { stream.skip(size); };
    return timed([&] { walk(path, skip); });
}

// Each save has a block of every channel. A range in several blocks takes a call for each.
double read_ranges(workload_data& series)
{
    const std::string path = library_file(series);
    std::vector<std::uint64_t> saves;
    walk(path, [&](stdio_stream& stream, std::uint64_t size) {
        saves.push_back(stream.position());
        stream.skip(size);
    });
    require(saves.size() == series.saves, "finding the saves");
    const stdio_stream stream(path, "rb");
    return timed_ranges(series, [&](const random_range& range, double* target) {
        for (std::size_t done = 0; done != random_range::length;) {
            const std::size_t save = (range.first + done) / series.values;
            const std::size_t begin = (range.first + done) % series.values;
            const std::size_t count = std::min(random_range::length - done, series.values - begin);
            const std::size_t value = range.channel * series.values + begin;
            read_at(stream, saves[save] + value * sizeof(double), target + done, count);
            done += count;
        }
    });
}

// Keeps the compiler from merging values that come one at a time.
double append_singly(workload_data& series)
{
    const double* source = series.source(0);
    std::vector<double> values;
    const double seconds = timed([&] {
        for (std::size_t i = 0; i != series.values; ++i) {
            values.push_back(source[i]);
            benchmark::DoNotOptimize(values.back());
        }
    });
    require(std::equal(values.begin(), values.end(), source, source + series.values), "appending");
    return seconds;
}

double write_strings(workload_data&)
{
    std::vector<std::uint32_t> ends;
    std::string bytes;
    for (const std::string& string : strings()) {
        ends.push_back(static_cast<std::uint32_t>((bytes += string).size()));
    }
    const std::string path = vacated(scratch("strings.raw"));
    return timed([&] {
        stdio_stream stream(path, "wb");
        stream.write(ends.data(), ends.size() * sizeof ends[0]);
        stream.write(bytes.data(), bytes.size());
    });
}

// The raw data of a file, one call for each segment.
double read_raw(const std::string& path)
{
    std::vector<char> raw(std::filesystem::file_size(path), '\1');
    const auto read = [&](stdio_stream& stream, std::uint64_t size) {
        stream.read(raw.data(), size);
    };
    return timed([&] { walk(path, read); });
}

double read_strings(workload_data&)
{
    return read_raw(library_string_file());
}

double write_nanoseconds(workload_data&)
{
    constexpr std::size_t size_of_timestamp = 16;
    const std::vector<char> values(nanoseconds().size() * size_of_timestamp, '\1');
    const std::string path = vacated(scratch("nanoseconds.raw"));
    return timed([&] {
        stdio_stream stream(path, "wb");
        stream.write(values.data(), values.size());
    });
}

double read_nanoseconds(workload_data&)
{
    return read_raw(library_nanosecond_file());
}

std::time_t seconds_of(const timestamp_fields& fields)
{
    std::tm time{};
    time.tm_year = fields.year - 1900;
    time.tm_mon = fields.month - 1;
    time.tm_mday = fields.day;
    time.tm_hour = fields.hour;
    time.tm_min = fields.minute;
    time.tm_sec = fields.second;
    return std::mktime(&time);
}

double write_times(workload_data&)
{
    return timed([] {
        for (const timestamp_fields& fields : timestamps()) {
            benchmark::DoNotOptimize(seconds_of(fields));
        }
    });
}

double read_times(workload_data&)
{
    std::vector<std::time_t> times;
    for (const timestamp_fields& fields : timestamps()) times.push_back(seconds_of(fields));
    return timed([&] {
        for (const std::time_t& time : times) benchmark::DoNotOptimize(std::localtime(&time));
    });
}

}  // namespace

const contender_runs limit_runs{.write = write,
                                .append_and_save = write,
                                .append_singly = append_singly,
                                .open = skim,
                                .read = read,
                                .read_opened = skim,
                                .read_ranges = read_ranges,
                                .write_strings = write_strings,
                                .read_strings = read_strings,
                                .write_times = write_times,
                                .read_times = read_times,
                                .write_nanoseconds = write_nanoseconds,
                                .read_nanoseconds = read_nanoseconds};

}  // namespace bench
