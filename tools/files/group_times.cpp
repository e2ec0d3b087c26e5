#include "files/group_times.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "console/report.h"
#include "console/text.h"

namespace tool {
namespace {

// Reads times piece by piece, and checks that they ascend.
class order_check {
  public:
    bool read(const tdms::channel& times, std::uint64_t first, std::uint64_t count)
    {
        const std::span<tdms::time> piece(piece_.data(), count);
        times.read(first, piece);
        const bool follows = piece.empty() || piece.front() >= last_;
        if (!piece.empty()) last_ = piece.back();
        return follows && std::ranges::is_sorted(piece);
    }

    static constexpr std::uint64_t most = 4096;  // times in a piece

  private:
    std::array<tdms::time, most> piece_{};
    tdms::time last_ = tdms::time::min();
};

}  // namespace

std::optional<selected_channel> time_channel_of(const tdms::group& g, std::uint64_t count)
{
    std::optional<selected_channel> found;
    for (const tdms::channel& c : g.channels()) {
        if (c.type() != TDMS_TYPE_TIMESTAMP) continue;
        const selected_channel times(g, c);
        if (times.count == 0 || times.count < count) continue;
        if (!found || c.name() == "time") found = times;
    }
    return found;
}

selected_channel required_times(const tdms::group& g, std::uint64_t count)
{
    if (const auto times = time_channel_of(g, count)) return *times;
    throw failure("the group " + in_quotes(g.name()) +
                  " has no timestamp channel with a time for every value");
}

std::optional<double> sampling_rate_of(const selected_channel& c)
{
    constexpr std::string_view name = "sampling rate";
    for (const tdms::object& of : {tdms::object(c.channel), tdms::object(c.group)}) {
        if (!of.properties().contains(name)) continue;
        const tdms::property_value value = of.properties().at(name);
        const auto as_number = [](const auto& v) -> double {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(v)>>) {
                return static_cast<double>(v);
            } else {
                return 0;
            }
        };
        const double rate = std::visit(as_number, value);
        if (rate > 0 && std::isfinite(rate)) return rate;
    }
    return std::nullopt;
}

std::uint64_t row_at(const selected_channel& times, tdms::time time)
{
    std::uint64_t low = 0;
    std::uint64_t high = times.count;
    while (low != high) {
        const std::uint64_t middle = low + (high - low) / 2;
        std::array<tdms::time, 1> found;
        times.channel.read(middle, found);
        if (found[0] < time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

bool ascend(const selected_channel& times, std::uint64_t first, std::uint64_t end)
{
    constexpr std::uint64_t samples = 64;
    const std::uint64_t step = times.count / samples;
    const std::uint64_t size = std::min(step, samples);
    order_check sampled;
    for (std::uint64_t i = 0; step > samples && i != samples; ++i) {
        if (!sampled.read(times.channel, i * step, size)) return false;
    }
    if (step <= samples) {  // so few that all are read
        first = 0;
        end = times.count;
    }
    order_check all;
    while (first < end) {
        const std::uint64_t count = std::min(order_check::most, end - first);
        if (!all.read(times.channel, first, count)) return false;
        first += count;
    }
    return true;
}

}  // namespace tool
