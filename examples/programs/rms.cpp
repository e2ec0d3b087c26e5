// rms: the root mean square of a channel, second by second.
//
//     rms FILE GROUP CHANNEL [RATE]
//
// Prints a line per second, with its beginning and the RMS of its values; the last second may be
// incomplete. The times of the values are those of the channel "time" of the group. Without that
// channel they follow from the properties "start" and "sampling rate" of the channel, its group or
// the file, or from RATE in Hz. The memory does not depend on the length of the channel, and a file
// can be read while it is recorded.
#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iostream>
#include <span>
#include <stdexcept>
#include <tdms.hpp>
#include <vector>

#include "support/conversions.hpp"
#include "support/exit_status.hpp"
#include "support/rms_of_seconds.hpp"

namespace {

constexpr std::uint64_t at_once = 65536;

template <class T>
T inherited(std::initializer_list<tdms::object> objects, const char* name, T otherwise)
{
    for (const tdms::object& o : objects) {
        if (o.properties().contains(name)) return o.property<T>(name);
    }
    return otherwise;
}

void print_rms(const char* path, const char* group, const char* name, double given_rate)
{
    const tdms::file f = tdms::file::partial(path);
    const tdms::group g = f[group];
    const tdms::channel c = g[name];
    const bool timed = g.contains("time") && g["time"].type() == TDMS_TYPE_TIMESTAMP;
    const double rate = given_rate > 0 ? given_rate : inherited({c, g, f}, "sampling rate", 0.0);
    const moment start = inherited({c, g, f}, "start", moment());
    if (!timed && !(rate > 0)) {
        throw std::runtime_error(f.path() + ": no time and no sampling rate");
    }

    std::vector<double> values(at_once);
    std::vector<moment> times(at_once);
    rms_of_seconds rms;
    const std::uint64_t size = c.size();
    for (std::uint64_t first = 0; first < size; first += at_once) {
        const std::size_t count = std::min(at_once, size - first);
        c.read(first, std::span(values).first(count));
        if (timed) g["time"].read(first, std::span(times).first(count));
        for (std::size_t i = 0; i != count; ++i) {
            rms.add(timed ? times[i] : start + after(first + i, rate), values[i]);
        }
    }
    rms.print();
    if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("rms", [&] {
        if (argc < 4 || argc > 5) {
            throw std::invalid_argument("usage: rms FILE GROUP CHANNEL [RATE]");
        }
        print_rms(argv[1], argv[2], argv[3], argc > 4 ? to_number<double>(argv[4]) : 0);
    });
}
