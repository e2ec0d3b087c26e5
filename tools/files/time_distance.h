#pragma once

#include <cstdint>
#include <tdms.hpp>

namespace tool {

/// How many nanoseconds a time is after another one; both are nanoseconds since 1970. The distance
/// may be too large for a signed number.
inline std::uint64_t nanoseconds_between(std::int64_t earlier, std::int64_t later)
{
    return static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier);
}

inline std::uint64_t nanoseconds_between(tdms::time earlier, tdms::time later)
{
    return nanoseconds_between(earlier.time_since_epoch().count(),
                               later.time_since_epoch().count());
}

}  // namespace tool
