// How the times of this library grow with the file.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "library.h"
#include "tables.h"

namespace bench {
namespace {

constexpr double target = 1.3;  // the highest acceptable ratio

// The median time of opening a file of that shape; small files are opened more often.
double opening_time(const workload_shape& shape)
{
    workload_data series(shape);
    const std::size_t work = shape.saves * shape.channels;
    std::vector<double> seconds(std::clamp<std::size_t>(100'000 / work, 7, 501));
    for (double& second : seconds) second = library_runs.open(series);
    vacated(series.file(".tdms"));
    return median(seconds);
}

void print_scaling(const char* what, const std::vector<std::size_t>& counts,
                   workload_shape (*shape)(std::size_t))
{
    std::printf("\n| %s | open | for each | to the first row |\n| --: | --: | --: | --: |\n", what);
    double first = 0;
    for (const std::size_t count : counts) {
        const double seconds = opening_time(shape(count));
        const double each = seconds / static_cast<double>(count);
        if (first == 0) first = each;
        std::printf("| %zu | %.4g ms | %.0f ns | %.2f |\n", count, seconds * 1e3, each * 1e9,
                    each / first);
        std::fflush(stdout);
    }
}

// A file that one handle records while another one follows. Each value is its index.
class followed_recording {
  public:
    followed_recording(const char* name, std::size_t segments) : path_(vacated(scratch(name)))
    {
        for (std::size_t i = 0; i != segments; ++i) save();
        viewer_.emplace(tdms_interface, path_, "r");
        followed_ = viewer_->channels().front();
    }

    const std::string& path() const { return path_; }

    // The time to take in one more segment.
    double refresh()
    {
        save();
        const double seconds = timed([&] { viewer_->refresh(); });
        double latest = 0;
        check(tdms_read_double(followed_, count_ - 1, 1, &latest));
        require(latest == static_cast<double>(count_ - 1), "following a recording");
        return seconds;
    }

  private:
    void save()
    {
        double values[10];
        for (double& value : values) value = static_cast<double>(count_++);
        check(tdms_append_double(recorded_, std::size(values), values));
        recorder_.save();
    }

    std::string path_;
    library_handle recorder_{tdms_interface, path_, "w"};
    void* recorded_ = recorder_.create_channels(1).front();
    std::size_t count_ = 0;
    std::optional<library_handle> viewer_;
    void* followed_ = nullptr;
};

// A file's first read locates all of its values.
void print_first_read(const std::string& path)
{
    std::vector<double> opening(101);
    std::vector<double> reading(opening.size());
    for (std::size_t i = 0; i != opening.size(); ++i) {
        std::optional<library_handle> file;
        opening[i] = timed([&] { file.emplace(tdms_interface, path, "r"); });
        void* channel = file->channels().front();
        double value = -1;
        reading[i] = timed([&] { check(tdms_read_double(channel, 0, 1, &value)); });
        require(value == 0, "reading a value back");
    }
    print_ratio("first `tdms_read_double`, 100,000 segments", median(reading), "`tdms_open`",
                median(opening), target);
}

// The small recording is started again and again, so that it stays small.
void print_refresh(followed_recording& large)
{
    constexpr std::size_t rounds_of_small = 10;
    std::optional<followed_recording> small;
    std::vector<double> with_large(1001);
    std::vector<double> with_small(with_large.size());
    for (std::size_t i = 0; i != with_large.size(); ++i) {
        if (i % rounds_of_small == 0) small.emplace("small.tdms", 10);
        with_small[i] = small->refresh();
        with_large[i] = large.refresh();
    }
    print_ratio("`tdms_refresh` after a save, 100,000 segments", median(with_large),
                "the same, 10 segments", median(with_small), target);
}

}  // namespace

void print_ratio(const char* first, double first_seconds, const char* second, double second_seconds,
                 double highest)
{
    const double ratio = first_seconds / second_seconds;
    std::printf("| %s | %.4g ms | %s | %.4g ms | %.3g | %g | %s |\n", first, first_seconds * 1e3,
                second, second_seconds * 1e3, ratio, highest, verdict(ratio <= highest));
    std::fflush(stdout);
}

void print_opening()
{
    std::printf("\nOpening, by size; a save makes two segments.\n");
    print_scaling("segments", {1'000, 10'000, 100'000}, [](std::size_t count) {
        return workload_shape{"scaling", 1, 10, count / 2};
    });
    print_scaling("channels", {10, 100, 1'000, 10'000}, [](std::size_t count) {
        return workload_shape{"scaling", count, 1, 1};
    });
}

void print_ratios()
{
    std::printf(
        "\nRatios within the library: medians of times taken in turn.\n\n"
        "| of | time | to | time | ratio | target | reached |\n"
        "| --- | --: | --- | --: | --: | --: | --- |\n");
    std::fflush(stdout);
    followed_recording large("large.tdms", 100'000);
    print_first_read(large.path());
    print_refresh(large);
    print_cpp_ratio();
}

}  // namespace bench
