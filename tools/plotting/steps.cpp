#include "plotting/steps.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "files/time_distance.h"

namespace tool {
namespace {

constexpr std::uint64_t factor = 5;

// The bucket for the power of two and the next two bits of a step.
std::size_t bucket_of(std::uint64_t step)
{
    const auto width = static_cast<std::size_t>(std::bit_width(step));
    if (width < 3) return step;
    return 4 * (width - 2) + ((step >> (width - 3)) & 3);
}

}  // namespace

void step_counter::take_in(std::uint64_t first, std::span<const tdms::time> times)
{
    const std::uint64_t end = first + times.size();
    if (end <= next_) return;
    if (first < next_) {
        times = times.subspan(next_ - first);
    } else if (first > next_ || first == 0) {
        last_ = times.front();
        times = times.subspan(1);
    }
    next_ = end;
    for (const tdms::time t : times) {
        count(last_, t);
        last_ = t;
    }
}

void step_counter::count(tdms::time from, tdms::time to)
{
    ++steps_;
    if (to <= from) return;
    const std::uint64_t step = nanoseconds_between(from, to);
    bucket& b = buckets_[bucket_of(step)];
    ++b.count;
    b.longest = std::max(b.longest, step);
}

// The median of the steps that go forward, to the nearest bucket.
std::uint64_t step_counter::median() const
{
    std::uint64_t all = 0;
    for (const bucket& b : buckets_) all += b.count;
    std::uint64_t passed = 0;
    for (const bucket& b : buckets_) {
        passed += b.count;
        if (2 * passed > all) return b.longest;
    }
    return 0;
}

double step_counter::longest() const
{
    const std::uint64_t typical = median();
    std::uint64_t alike = 0;
    for (const bucket& b : buckets_) {
        if (b.longest >= typical / factor && b.longest / factor <= typical) alike += b.count;
    }
    if (typical == 0 || 10 * alike < 9 * steps_) return std::numeric_limits<double>::infinity();
    return static_cast<double>(factor) * static_cast<double>(typical);
}

}  // namespace tool
