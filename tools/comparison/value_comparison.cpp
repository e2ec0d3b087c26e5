#include "comparison/value_comparison.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "comparison/difference_text.h"
#include "console/short_number.h"
#include "files/piece_reader.h"

namespace tool {

bool is_number_type(int type)
{
    bool result = false;
    static_cast<void>(tdms::with_type(type, [&]<class T>() { result = is_number<T>; }));
    return result;
}

void value_comparison::run()
{
    if (a_.channel.type == b_.channel.type) {
        static_cast<void>(tdms::with_type(a_.channel.type,
                                          [this]<class T>() { this->template compare_as<T>(); }));
    } else if (is_number_type(a_.channel.type) && is_number_type(b_.channel.type)) {
        compare_numbers();
    }
}

value_differences value_comparison::differences() const
{
    value_differences result = found_;
    if (largest_ <= 0) return result;
    bool are_integers = false;
    if (a_.channel.type == b_.channel.type) {
        static_cast<void>(tdms::with_type(
            a_.channel.type, [&]<class T>() { are_integers = std::is_integral_v<T>; }));
    }
    result.largest = are_integers ? std::to_string(static_cast<std::uint64_t>(largest_))
                                  : short_number(static_cast<double>(largest_));
    return result;
}

template <class T>
void value_comparison::compare_as()
{
    piece_reader<T> from_a(a_.channel.channel, shown_);
    piece_reader<T> from_b(b_.channel.channel, shown_);
    for (std::uint64_t first = 0; first != total() && !is_decided();) {
        const auto count = std::min({total() - first, from_a.fitting(), from_b.fitting()});
        compare_piece(first, read_from(a_.in, [&] { return from_a.read(first, count); }),
                      read_from(b_.in, [&] { return from_b.read(first, count); }));
        first += count;
    }
}

void value_comparison::compare_numbers()
{
    constexpr std::uint64_t most = 1 << 14;
    const number_reader read_a = numbers_of(a_);
    const number_reader read_b = numbers_of(b_);
    std::vector<long double> from_a;
    std::vector<long double> from_b;
    for (std::uint64_t first = 0; first != total() && !is_decided();) {
        const std::uint64_t count = std::min(total() - first, most);
        from_a.resize(count);
        from_b.resize(count);
        read_a(first, from_a);
        read_b(first, from_b);
        compare_piece<long double>(first, from_a, from_b);
        first += count;
    }
}

template <class T>
void value_comparison::compare_piece(std::uint64_t first, std::span<const T> a,
                                     std::span<const T> b)
{
    if constexpr (!std::is_same_v<T, std::string>) {
        const void* const bytes = a.data();
        if (std::memcmp(bytes, b.data(), a.size_bytes()) == 0) return;
    }
    for (std::size_t i = 0; i != a.size(); ++i) {
        if (!tolerance_.accepts(a[i], b[i])) add(first + i, a[i], b[i]);
    }
}

template <class T>
void value_comparison::add(std::uint64_t at, const T& a, const T& b)
{
    if (found_.count++ == 0) {
        found_.first = at;
        found_.values = both(a, b);
    }
    if constexpr (is_number<T>) {
        const long double difference =
            std::abs(static_cast<long double>(a) - static_cast<long double>(b));
        if (std::isfinite(difference)) largest_ = std::max(largest_, difference);
    }
}

value_comparison::number_reader value_comparison::numbers_of(const side& from)
{
    number_reader result;
    static_cast<void>(tdms::with_type(from.channel.type, [&]<class T>() {
        if constexpr (is_number<T>) result = this->template numbers_as<T>(from);
    }));
    return result;
}

template <class T>
value_comparison::number_reader value_comparison::numbers_as(const side& from)
{
    const auto reader = std::make_shared<piece_reader<T>>(from.channel.channel, shown_);
    return [&in = from.in, reader](std::uint64_t first, std::span<long double> to) {
        std::ranges::copy(read_from(in, [&] { return reader->read(first, to.size()); }),
                          to.begin());
    };
}

}  // namespace tool
