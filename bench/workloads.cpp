#include "workloads.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace bench {
namespace {

class temporary_folder {
  public:
    temporary_folder()
    {
        const char* base = std::getenv("TDMS_BENCH_DIR");
        path_ = std::string(base != nullptr ? base : "/dev/shm") + "/tdms-bench-XXXXXX";
        require(mkdtemp(path_.data()) != nullptr, "creating the scratch folder");
    }
    temporary_folder(const temporary_folder&) = delete;
    temporary_folder& operator=(const temporary_folder&) = delete;
    ~temporary_folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

std::vector<std::string> make_strings()
{
    std::vector<std::string> made;
    for (std::size_t i = 0; i != 500'000; ++i) {
        char string[32];
        std::snprintf(string, sizeof string, "item %05zu 89abcdef", i % 100'000);
        made.emplace_back(string, 10 + i % 9);
    }
    return made;
}

std::vector<const char*> make_string_pointers()
{
    std::vector<const char*> made;
    for (const std::string& string : strings()) made.push_back(string.c_str());
    return made;
}

std::vector<timestamp_fields> make_timestamps()
{
    constexpr int per_second = 100;
    constexpr int step = 1'000'000 / per_second;
    std::vector<timestamp_fields> made;
    for (int i = 0; i != 300'000; ++i) {
        const int second = i / per_second;
        made.push_back({2024, 1, 15, 10, second / 60, second % 60, i % per_second * step});
    }
    return made;
}

std::vector<std::int64_t> make_nanoseconds()
{
    constexpr std::int64_t step = 1'000'003;
    std::vector<std::int64_t> made;
    for (std::int64_t next = 1'700'000'000'000'000'000; made.size() != 1'000'000; next += step) {
        made.push_back(next);
    }
    return made;
}

// Yields the same numbers everywhere, unlike the distributions of the standard library.
class random_numbers {
  public:
    std::size_t below(std::size_t limit)
    {
        state_ = state_ * 6364136223846793005 + 1442695040888963407;
        return (state_ >> 33) % limit;  // the low bits hardly vary
    }

  private:
    std::uint64_t state_ = 1;
};

}  // namespace

workload_data::workload_data(const workload_shape& shape)
    : workload_shape(shape), source_(channels * values), target_(channels * values * saves)
{
    double next = 0;
    for (double& value : source_) value = next += 0.5;
}

std::string workload_data::file(const char* extension) const
{
    return scratch(std::string(name) + extension);
}

void workload_data::clear()
{
    std::fill(target_.begin(), target_.end(), -1.0);
}

void workload_data::verify(std::size_t count) const
{
    const double* read = target_.data();
    for (std::size_t channel = 0; channel != count; ++channel) {
        for (std::size_t save = 0; save != saves; ++save, read += values) {
            require(std::equal(read, read + values, source(channel)), "reading back");
        }
    }
}

std::vector<random_range> random_ranges(const workload_data& series)
{
    random_numbers random;
    const std::size_t firsts = series.values * series.saves - random_range::length + 1;
    std::vector<random_range> made(10'000);
    for (random_range& range : made) range = {random.below(series.channels), random.below(firsts)};
    return made;
}

void verify_range(const workload_data& series, const random_range& range,
                  const std::vector<double>& values)
{
    const double* source = series.source(range.channel);
    for (std::size_t i = 0; i != values.size(); ++i) {
        require(values[i] == source[(range.first + i) % series.values], "reading a range back");
    }
}

void require(bool success, const char* what)
{
    if (!success) throw std::runtime_error(std::string(what) + " failed");
}

std::string scratch(const std::string& name)
{
    static const temporary_folder folder;
    return folder.path() + "/" + name;
}

bool exists(const std::string& path)
{
    return std::filesystem::exists(path);
}

const std::string& vacated(const std::string& path)
{
    std::filesystem::remove(path);
    return path;
}

std::string channel_name(std::size_t index)
{
    char name[32];
    std::snprintf(name, sizeof name, "channel %05zu", index);
    return name;
}

const std::vector<std::string>& strings()
{
    static const auto made = make_strings();
    return made;
}

const std::vector<const char*>& string_pointers()
{
    static const auto made = make_string_pointers();
    return made;
}

const std::vector<timestamp_fields>& timestamps()
{
    static const auto made = make_timestamps();
    return made;
}

const std::vector<std::int64_t>& nanoseconds()
{
    static const auto made = make_nanoseconds();
    return made;
}

}  // namespace bench
