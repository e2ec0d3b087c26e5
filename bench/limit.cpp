/**
 * The limit of each workload: bare stdio moving the same bytes from and to the caller's arrays, in
 * the grain that is natural to them; for timestamps the C library's conversion of each value.
 *
 * What is written has the sizes of this library's files, with zeros in place of the metadata; what
 * is read is this library's files themselves.
 */
#include <benchmark/benchmark.h>
#include <endian.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "workloads.h"

namespace bench {

namespace {

constexpr std::size_t lead_in_size = 28;

class Stream {
  public:
    Stream(const std::string& path, const char* mode) : file_(std::fopen(path.c_str(), mode))
    {
        require(file_ != nullptr, "fopen");
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { std::fclose(file_); }

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

  private:
    std::FILE* file_;
};

std::uint64_t u64_at(const unsigned char* bytes)
{
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return le64toh(value);
}

/** Goes from segment to segment; `on_raw(stream, size)` deals with the raw data that there is. */
template <class OnRaw>
void walk(const std::string& path, const OnRaw& on_raw)
{
    Stream stream(path, "rb");
    unsigned char lead_in[lead_in_size];
    std::vector<unsigned char> metadata;
    while (stream.try_read(lead_in, sizeof lead_in)) {
        metadata.resize(u64_at(lead_in + 20));
        stream.read(metadata.data(), metadata.size());
        const std::uint64_t raw = u64_at(lead_in + 12) - metadata.size();
        if (raw != 0) on_raw(stream, raw);
    }
}

/** A save's first segment, which lists no object, except in the first save. */
constexpr std::size_t first_size = lead_in_size + 4;

/** Lead-in and metadata of the second: each channel's path, index and number of properties. */
std::size_t second_header_size(const Series& series)
{
    const std::size_t path = 4 + std::strlen("/'group'/''") + channel_name(0).size();
    return lead_in_size + 4 + series.channels * (path + 20 + 4);
}

/** One call for each array; where the values are few, one for each whole segment. */
double write(Series& series)
{
    const std::string path = vacated(series.file(".raw"));
    const std::size_t size = series.values * sizeof(double);
    const bool few = series.channels * size < BUFSIZ / 2;
    const std::vector<char> first(first_size);
    const std::vector<char> second(second_header_size(series) + (few ? series.channels * size : 0));
    return timed([&] {
        Stream stream(path, "wb");
        for (std::size_t save = 0; save != series.saves; ++save) {
            stream.write(first.data(), first.size());
            stream.write(second.data(), second.size());
            for (std::size_t i = 0; !few && i != series.channels; ++i)
                stream.write(series.source(i), size);
        }
    });
}

double read(Series& series)
{
    const std::string path = library_file(series);
    const std::size_t size = series.values * sizeof(double);
    series.clear();
    const double seconds = timed([&] {
        std::size_t save = 0;
        walk(path, [&](Stream& stream, std::uint64_t) {
            for (std::size_t i = 0; i != series.channels; ++i)
                stream.read(series.target(i, save), size);
            ++save;
        });
    });
    series.verify(series.channels);
    return seconds;
}

/** Reads lead-ins and metadata, and seeks over the values. */
double skim(Series& series)
{
    const std::string path = library_file(series);
    const auto skip = [](Stream& stream, std::uint64_t size) { stream.skip(size); };
    return timed([&] { walk(path, skip); });
}

double write_texts(Series&)
{
    std::vector<std::uint32_t> ends;
    std::string bytes;
    for (const std::string& text : texts())
        ends.push_back(static_cast<std::uint32_t>((bytes += text).size()));
    const std::string path = vacated(scratch("texts.raw"));
    return timed([&] {
        Stream stream(path, "wb");
        stream.write(ends.data(), ends.size() * sizeof ends[0]);
        stream.write(bytes.data(), bytes.size());
    });
}

double read_texts(Series&)
{
    const std::string path = library_text_file();
    std::vector<char> raw(std::filesystem::file_size(path), '\1');
    const auto read = [&](Stream& stream, std::uint64_t size) { stream.read(raw.data(), size); };
    return timed([&] { walk(path, read); });
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

double write_times(Series&)
{
    return timed([] {
        for (const timestamp_fields& fields : timestamps())
            benchmark::DoNotOptimize(seconds_of(fields));
    });
}

double read_times(Series&)
{
    std::vector<std::time_t> times;
    for (const timestamp_fields& fields : timestamps()) times.push_back(seconds_of(fields));
    return timed([&] {
        for (const std::time_t& time : times) benchmark::DoNotOptimize(std::localtime(&time));
    });
}

}  // namespace

const Runs limit_runs{.write = write,
                      .open = skim,
                      .read = read,
                      .read_opened = skim,
                      .write_texts = write_texts,
                      .read_texts = read_texts,
                      .write_times = write_times,
                      .read_times = read_times};

}  // namespace bench
