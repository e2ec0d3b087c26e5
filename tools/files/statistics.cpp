#include "files/statistics.h"

#include <algorithm>
#include <span>

#include "console/progress.h"
#include "files/group_times.h"
#include "files/measurement_file.h"
#include "files/number_statistics.h"
#include "files/piece_reader.h"
#include "files/selected_channel.h"
#include "files/time_distance.h"

namespace tool {
namespace {

class time_statistics {
  public:
    void add(std::span<const tdms::time> piece)
    {
        if (low_ > high_ && !piece.empty()) before_ = piece.front();
        for (const tdms::time each : piece) {
            low_ = std::min(low_, each);
            high_ = std::max(high_, each);
            if (each < before_) {
                ascending_ = false;
            } else {
                step_ = std::max(step_, nanoseconds_between(before_, each));
            }
            before_ = each;
        }
    }

    void put(channel_statistics& to) const
    {
        to.ascending = ascending_;
        to.largest_step = static_cast<double>(step_) / 1e9;
        if (low_ > high_) return;
        to.minimum = low_;
        to.maximum = high_;
    }

  private:
    tdms::time low_ = tdms::time::max();
    tdms::time high_ = tdms::time::min();
    tdms::time before_;
    bool ascending_ = true;
    std::uint64_t step_ = 0;
};

class string_statistics {
  public:
    void add(std::span<const std::string> piece)
    {
        for (const std::string& each : piece) lengths_.add(each.size());
    }

    void put(channel_statistics& to) const
    {
        if (lengths_.low > lengths_.high) return;
        to.minimum = lengths_.low;
        to.maximum = lengths_.high;
    }

  private:
    extremes<std::uint64_t> lengths_;
};

template <class T>
struct statistics_for {
    using type = number_statistics<T>;
};
template <>
struct statistics_for<tdms::time> {
    using type = time_statistics;
};
template <>
struct statistics_for<std::string> {
    using type = string_statistics;
};

template <class T>
void read_statistics(const selected_channel& c, progress& shown, channel_statistics& to)
{
    typename statistics_for<T>::type found;
    piece_reader<T> from(c.channel, shown);
    for (std::uint64_t next = 0; next != c.count;) {
        const std::uint64_t count = std::min(c.count - next, from.fitting());
        found.add(from.read(next, count));
        next += count;
    }
    found.put(to);
}

channel_statistics statistics_of(const selected_channel& c, progress& shown)
{
    channel_statistics result;
    try {
        const bool has_values =
            tdms::with_type(c.type, [&]<class T>() { read_statistics<T>(c, shown, result); });
        if (!has_values && c.lost != 0) result.failure = lost_values(c);
    } catch (const tdms::error& e) {
        result.failure = message_of(e.status(), e.system_error());
    }
    return result;
}

group_statistics statistics_of(const tdms::group& g, progress& shown)
{
    std::vector<selected_channel> channels;
    std::uint64_t samples = 0;
    for (const tdms::channel& each : g.channels()) {
        const selected_channel& c = channels.emplace_back(g, each);
        if (c.type != TDMS_TYPE_TIMESTAMP) samples = std::max(samples, c.count);
    }
    const std::optional<selected_channel> times = time_channel_of(g, samples);
    group_statistics result;
    for (const selected_channel& c : channels) {
        const channel_statistics& found = result.channels.emplace_back(statistics_of(c, shown));
        if (!times || c.channel != times->channel || !found.failure.empty()) continue;
        result.times = {c.channel.name(),
                        c.count,
                        std::get<tdms::time>(found.minimum),
                        std::get<tdms::time>(found.maximum),
                        found.ascending,
                        found.largest_step};
    }
    return result;
}

}  // namespace

double seconds_between(tdms::time first, tdms::time last)
{
    return static_cast<double>(nanoseconds_between(first, last)) / 1e9;
}

double sample_times::duration() const
{
    return seconds_between(first, last);
}

std::optional<double> sample_times::rate() const
{
    if (!ascending || first == last) return std::nullopt;
    return static_cast<double>(count - 1) / duration();
}

bool sample_times::is_even() const
{
    constexpr double most = 1.5;
    return count < 2 || largest_step <= most * duration() / static_cast<double>(count - 1);
}

file_statistics statistics_of(const input& from, const tdms::file& file)
{
    file_statistics result{{}, from.size(), std::nullopt, std::nullopt};
    progress shown("reading", result.size - std::min(result.size, file.rest()));
    for (const tdms::group& g : file.groups()) {
        const std::optional<sample_times>& times =
            result.groups.emplace_back(statistics_of(g, shown)).times;
        if (!times) continue;
        result.first = std::min(result.first.value_or(times->first), times->first);
        result.last = std::max(result.last.value_or(times->last), times->last);
    }
    return result;
}

}  // namespace tool
