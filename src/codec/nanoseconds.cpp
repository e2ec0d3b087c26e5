#include "codec/nanoseconds.h"

#include <algorithm>
#include <limits>

#include "codec/byte_order.h"
#include "codec/timestamp_codec.h"

namespace tdms_impl {
namespace {

__extension__ using int128 = __int128;
__extension__ using uint128 = unsigned __int128;

constexpr std::int64_t per_second = 1000000000;

// 2^64 divided by 10^9: the fraction's units in a nanosecond, and what remains.
constexpr std::uint64_t units = 18446744073;
constexpr std::uint64_t units_rest = 709551616;

void encode(std::int64_t value, unsigned char* p)
{
    std::int64_t seconds = value / per_second;
    std::int64_t rest = value % per_second;
    if (rest < 0) {
        --seconds;
        rest += per_second;
    }
    const auto ns = static_cast<std::uint64_t>(rest);
    store(p, ns * units + (ns * units_rest + per_second / 2) / per_second, true);
    store(p + 8, seconds + seconds_from_1904_to_1970, true);
}

std::int64_t decode(const unsigned char* p)
{
    using limits = std::numeric_limits<std::int64_t>;
    constexpr uint128 half = uint128{1} << 63;
    const uint128 scaled = static_cast<uint128>(load<std::uint64_t>(p, true)) * per_second;
    const auto rest = static_cast<int128>((scaled + half) >> 64);
    const int128 seconds = int128{load<std::int64_t>(p + 8, true)} - seconds_from_1904_to_1970;
    return static_cast<std::int64_t>(
        std::clamp(seconds * per_second + rest, int128{limits::min()}, int128{limits::max()}));
}

}  // namespace

void encode_nanoseconds(const std::int64_t* values, std::uint64_t count, unsigned char* target)
{
    for (std::uint64_t i = 0; i != count; ++i) encode(values[i], target + timestamp_size * i);
}

void decode_nanoseconds(const unsigned char* bytes, std::uint64_t count, std::int64_t* values)
{
    for (std::uint64_t i = 0; i != count; ++i) values[i] = decode(bytes + timestamp_size * i);
}

}  // namespace tdms_impl
