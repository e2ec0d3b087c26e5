// rms: the root mean square of a channel, second by second.
//
//     rms FILE GROUP CHANNEL [RATE]
//
// Prints a line per second: when it begins, and the RMS of its values; the last second may be
// incomplete. When a value was measured is taken from the channel "time" of the group. Without one,
// it follows from the properties "start" and "sampling rate" of the channel, its group or the file,
// or from RATE in Hz. Takes the same memory for every length, and reads a file while it is
// recorded.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "support/text.hpp"

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

std::chrono::nanoseconds after(std::uint64_t samples, double rate)
{
    return std::chrono::nanoseconds(std::llround(static_cast<double>(samples) * 1e9 / rate));
}

class mean_of_seconds {
  public:
    void add(moment time, double value)
    {
        if (count_ != 0 && time - begin_ >= std::chrono::seconds(1)) print();
        if (count_ == 0) begin_ = time;
        sum_ += value * value;
        ++count_;
    }

    void print()
    {
        if (count_ == 0) return;
        std::cout << to_text(begin_) << ' ' << to_text(std::sqrt(sum_ / count_)) << '\n';
        sum_ = count_ = 0;
    }

  private:
    moment begin_;
    double sum_ = 0;
    double count_ = 0;
};

void print_rms(const char* path, const char* group, const char* name, double given_rate)
{
    const tdms::file f = tdms::file::partial(path);
    const tdms::group g = f[group];
    const tdms::channel c = g[name];
    const bool timed = g.contains("time") && g["time"].type() == TDMS_TYPE_TIMESTAMP;
    const double rate = given_rate > 0 ? given_rate : inherited({c, g, f}, "sampling rate", 0.0);
    const moment start = inherited({c, g, f}, "start", moment());
    if (!timed && !(rate > 0))
        throw std::runtime_error(f.path() + ": no time and no sampling rate");

    std::vector<double> values(at_once);
    std::vector<moment> times(at_once);
    mean_of_seconds mean;
    const std::uint64_t size = c.size();
    for (std::uint64_t first = 0; first < size; first += at_once) {
        const std::size_t count = std::min(at_once, size - first);
        c.read(first, std::span(values).first(count));
        if (timed) g["time"].read(first, std::span(times).first(count));
        for (std::size_t i = 0; i != count; ++i) {
            mean.add(timed ? times[i] : start + after(first + i, rate), values[i]);
        }
    }
    mean.print();
    if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        if (argc < 4 || argc > 5) {
            throw std::invalid_argument("usage: rms FILE GROUP CHANNEL [RATE]");
        }
        print_rms(argv[1], argv[2], argv[3], argc > 4 ? to_number<double>(argv[4]) : 0);
        return 0;
    } catch (const std::invalid_argument& e) {
        std::cerr << "rms: " << e.what() << '\n';
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "rms: " << e.what() << '\n';
        return 1;
    }
}
