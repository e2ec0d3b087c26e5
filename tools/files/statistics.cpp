#include "files/statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <span>
#include <type_traits>

#include "console/progress.h"
#include "files/group_times.h"
#include "files/piece_reader.h"

namespace tool {
namespace {

// Results side by side, so that no step waits for the one before it.
constexpr std::size_t lanes = 8;
// The values of a block stay in the fastest cache while they are looked at several times.
constexpr std::size_t block_size = 2048;

template <class T>
constexpr T beyond_all()
{
    using limits = std::numeric_limits<T>;
    return limits::has_infinity ? limits::infinity() : limits::max();
}

template <class T>
constexpr T below_all()
{
    using limits = std::numeric_limits<T>;
    return limits::has_infinity ? -limits::infinity() : limits::lowest();
}

template <class T>
struct extremes {
    T low = beyond_all<T>();
    T high = below_all<T>();

    // NaN is neither.
    void add(T value)
    {
        low = value < low ? value : low;
        high = value > high ? value : high;
    }
    void add(const extremes& more)
    {
        low = std::min(low, more.low);
        high = std::max(high, more.high);
    }
};

template <class T>
extremes<T> extremes_of(std::span<const T> values)
{
    std::array<extremes<T>, lanes> found;
    std::size_t i = 0;
    for (; i + lanes <= values.size(); i += lanes) {
        for (std::size_t j = 0; j != lanes; ++j) found[j].add(values[i + j]);
    }
    for (; i != values.size(); ++i) found[0].add(values[i]);
    for (const extremes<T>& each : found) found[0].add(each);
    return found[0];
}

template <class Sum, class Term>
Sum sum_of(std::span<const double> values, Term term)
{
    std::array<Sum, lanes> sums{};
    std::size_t i = 0;
    for (; i + lanes <= values.size(); i += lanes) {
        for (std::size_t j = 0; j != lanes; ++j) sums[j] += term(values[i + j]);
    }
    for (; i != values.size(); ++i) sums[0] += term(values[i]);
    return std::accumulate(sums.begin(), sums.end(), Sum{});
}

// The number of values, their mean, and the sum of their squared distances from it. In long double,
// which no sum of squares of doubles exceeds.
struct moments {
    void add(const moments& more)
    {
        if (count == 0) {
            *this = more;
            return;
        }
        const long double total = count + more.count;
        const long double distance = more.mean - mean;
        squares += more.squares + distance * distance * (count * more.count / total);
        // With an infinity it is the mean, unless the other one is the opposite.
        mean += std::isfinite(distance) ? distance * (more.count / total) : more.mean;
        count = total;
    }

    long double count = 0;
    long double mean = 0;
    long double squares = 0;
};

template <class Sum>
moments moments_by(std::span<const double> values)
{
    const auto count = static_cast<Sum>(values.size());
    const Sum mean = sum_of<Sum>(values, [](double v) -> Sum { return v; }) / count;
    // Would be 0 but for rounding, which it corrects.
    const Sum rest = sum_of<Sum>(values, [mean](double v) -> Sum { return v - mean; });
    const Sum squares = sum_of<Sum>(values, [mean](double v) { return (v - mean) * (v - mean); });
    moments result{count, mean, squares - rest * rest / count};
    if (std::isfinite(mean)) result.mean += rest / count;
    return result;
}

moments moments_of(std::span<const double> values)
{
    constexpr double least = 1e-280;  // below, squares lose digits
    const moments fast = moments_by<double>(values);
    if (std::isfinite(fast.squares) && fast.squares > least) return fast;
    return moments_by<long double>(values);
}

// What is found out about a channel's numbers, block by block.
template <class T>
class number_statistics {
  public:
    void add(std::span<const T> piece)
    {
        for (; !piece.empty(); piece = piece.subspan(std::min(block_size, piece.size()))) {
            add_block(piece.first(std::min(block_size, piece.size())));
        }
    }

    void put(channel_statistics& to) const
    {
        to.nan = nan_;
        if (moments_.count == 0) return;
        to.minimum = extremes_.low;
        to.maximum = extremes_.high;
        to.mean = static_cast<double>(moments_.mean);
        if (moments_.count < 2) return;
        to.deviation = static_cast<double>(std::sqrt(moments_.squares / (moments_.count - 1)));
    }

  private:
    void add_block(std::span<const T> block)
    {
        const std::span<const double> numbers = numbers_in(block);
        nan_ += block.size() - numbers.size();
        if (numbers.empty()) return;
        const extremes<T> found = extremes_of(block);
        extremes_.add(found);
        if (found.low == found.high) {
            const long double value = numbers[0];
            moments_.add({static_cast<long double>(numbers.size()), value, value - value});
        } else {
            moments_.add(moments_of(numbers));
        }
    }

    // The values but NaN.
    std::span<const double> numbers_in(std::span<const T> block)
    {
        if constexpr (std::is_same_v<T, double>) {
            // A NaN would make the sum one.
            if (!std::isnan(sum_of<double>(block, std::identity()))) return block;
        }
        std::size_t count = 0;
        for (const T value : block) {
            numbers_[count] = static_cast<double>(value);
            count += std::isnan(numbers_[count]) ? 0 : 1;  // the next value overwrites a NaN
        }
        return std::span(numbers_).first(count);
    }

    std::array<double, block_size> numbers_;
    std::uint64_t nan_ = 0;
    extremes<T> extremes_;
    moments moments_;
};

// All nanoseconds that there are do not fit in a signed number.
std::uint64_t nanoseconds_between(tdms::time first, tdms::time last)
{
    const auto count = [](tdms::time time) {
        return static_cast<std::uint64_t>(time.time_since_epoch().count());
    };
    return count(last) - count(first);
}

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
