#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <optional>
#include <span>
#include <type_traits>

#include "commands/commands.h"
#include "comparison/difference_text.h"
#include "comparison/tolerance.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/short_number.h"
#include "console/text.h"
#include "files/piece_reader.h"

namespace tool {
namespace {

bool is_number_type(int type)
{
    return type >= TDMS_TYPE_INT8 && type <= TDMS_TYPE_DOUBLE;
}

struct compared_file {
    explicit compared_file(const std::string& as) : name(as), from(as), file(open_intact(from)) {}

    std::string name;
    input from;
    tdms::file file;
};

// One of the two files cannot be read.
struct read_failure {
    const compared_file& in;
    std::string message;
};

template <class Read>
auto read_from(const compared_file& in, Read read)
{
    try {
        return read();
    } catch (const tdms::error& e) {
        throw read_failure{in, message_of(e.status(), e.system_error())};
    }
}

// Where the values of two channels differ.
struct value_differences {
    std::uint64_t count = 0;
    std::uint64_t first = 0;
    std::string values;       // the first that differ
    long double largest = 0;  // of the differences that are finite
};

class comparison {
  public:
    comparison(const diff_options& wanted, const compared_file& a, const compared_file& b)
        : wanted_(wanted), tolerance_(wanted.tolerance, wanted.relative_tolerance), a_(a), b_(b)
    {
    }

    /// @return whether both are equal, and can be read
    bool run()
    {
        try {
            shown_.emplace("comparing", a_.from.size() + b_.from.size());
            compare_files();
        } catch (const read_failure& e) {
            failures_.push_back({e.in, e.message});
        }
        shown_.reset();
        out_.flush();
        for (const read_failure& each : failures_) report(each.in.name, each.message);
        return equal_ && failures_.empty();
    }

  private:
    struct channel_pair {
        const selected_channel& a;
        const selected_channel& b;
        std::uint64_t count;  // of the values that both have
    };

    void differ(const std::string& where, const std::string& what)
    {
        equal_ = false;
        if (!wanted_.quiet) out_.put(where + ": " + what + '\n');
    }

    bool is_decided() const { return wanted_.quiet && !equal_; }

    void compare_files()
    {
        compare_properties("file", a_.file, b_.file);
        for (const tdms::group& g : a_.file.groups()) {
            if (is_decided()) return;
            const std::string where = "group " + in_quotes(g.name());
            if (b_.file.contains(g.name())) {
                compare_groups(where, g, b_.file[g.name()]);
            } else {
                differ(where, only_in(a_));
            }
        }
        for (const tdms::group& g : b_.file.groups()) {
            if (!a_.file.contains(g.name())) differ("group " + in_quotes(g.name()), only_in(b_));
        }
    }

    void compare_groups(const std::string& where, const tdms::group& a, const tdms::group& b)
    {
        const auto name_of = [&a](const tdms::channel& c) {
            return "channel " + in_quotes(a.name() + '/' + c.name());
        };
        compare_properties(where, a, b);
        for (const tdms::channel& c : a.channels()) {
            if (is_decided()) return;
            if (b.contains(c.name())) {
                const auto one = read_from(a_, [&] { return selected_channel(a, c); });
                const auto other = read_from(b_, [&] { return selected_channel(b, b[c.name()]); });
                compare_channels(name_of(c), one, other);
            } else {
                differ(name_of(c), only_in(a_));
            }
        }
        for (const tdms::channel& c : b.channels()) {
            if (!a.contains(c.name())) differ(name_of(c), only_in(b_));
        }
    }

    void compare_channels(const std::string& where, const selected_channel& a,
                          const selected_channel& b)
    {
        compare_properties(where, a.channel, b.channel);
        if (a.type != b.type) {
            differ(where, "type " + type_name(a.type) + " and " + type_name(b.type));
        }
        if (a.count != b.count) {
            differ(where, with_commas(a.count) + " and " + count_of(b.count, "value"));
        }
        note_lost(a_, a);
        note_lost(b_, b);
        if (!is_decided()) compare_values(where, {a, b, std::min(a.count, b.count)});
    }

    void note_lost(const compared_file& in, const selected_channel& c)
    {
        if (c.lost != 0) failures_.push_back({in, in_quotes(c.name()) + ": " + lost_values(c)});
    }

    static std::string only_in(const compared_file& one)
    {
        return "only in " + printable(one.name);
    }

    void compare_properties(const std::string& where, const tdms::object& a, const tdms::object& b)
    {
        const tdms::property_map ours = a.properties();
        const tdms::property_map theirs = b.properties();
        const auto place_of = [&where](const std::string& property) {
            return where + ": property " + in_quotes(property);
        };
        for (const auto& [name, value] : ours) {
            if (is_decided()) return;
            if (theirs.contains(name)) {
                compare_property(place_of(name), value, theirs.at(name));
            } else {
                differ(place_of(name), only_in(a_));
            }
        }
        for (const auto& [name, value] : theirs) {
            if (!ours.contains(name)) differ(place_of(name), only_in(b_));
        }
    }

    void compare_property(const std::string& where, const tdms::property_value& a,
                          const tdms::property_value& b)
    {
        const auto compare = [&](const auto& value) {
            using T = std::decay_t<decltype(value)>;
            const T& other = std::get<T>(b);
            if constexpr (!std::is_same_v<T, std::monostate>) {
                if (!tolerance_.accepts(value, other)) differ(where, both(value, other));
            }
        };
        if (a.index() != b.index()) {
            differ(where, with_type_name(a) + " and " + with_type_name(b));
        } else {
            std::visit(compare, a);
        }
    }

    void compare_values(const std::string& where, const channel_pair& of)
    {
        value_differences found;
        std::string largest;
        try {
            if (of.a.type == of.b.type) {
                static_cast<void>(tdms::with_type(of.a.type, [&]<class T>() {
                    compare_as<T>(of, found);
                    if constexpr (std::is_integral_v<T>) {
                        largest = std::to_string(static_cast<std::uint64_t>(found.largest));
                    }
                }));
            } else if (is_number_type(of.a.type) && is_number_type(of.b.type)) {
                compare_numbers(of, found);
            }
        } catch (const read_failure& e) {
            failures_.push_back({e.in, in_quotes(of.a.name()) + ": " + e.message});
        }
        if (found.count == 0) return;
        if (largest.empty()) largest = short_number(static_cast<double>(found.largest));
        std::string text = with_commas(found.count) + " of " + count_of(of.count, "value");
        text.append(found.count == 1 ? " differs" : " differ");
        if (is_number_type(of.a.type) && !tolerance_.is_exact()) {
            text.append(" by more than the tolerance");
        }
        text.append(", first at ").append(std::to_string(found.first)).append(": ");
        text.append(found.values);
        if (found.largest > 0) text.append("; largest difference ").append(largest);
        differ(where, text);
    }

    // Values of the same type.
    template <class T>
    void compare_as(const channel_pair& of, value_differences& found)
    {
        piece_reader<T> a(of.a.channel, *shown_);
        piece_reader<T> b(of.b.channel, *shown_);
        for (std::uint64_t first = 0; first != of.count && !is_decided(found);) {
            const auto count = std::min({of.count - first, a.fitting(), b.fitting()});
            compare_piece(first, read_from(a_, [&] { return a.read(first, count); }),
                          read_from(b_, [&] { return b.read(first, count); }), found);
            first += count;
        }
    }

    bool is_decided(const value_differences& found) const
    {
        return wanted_.quiet && found.count != 0;
    }

    template <class T>
    void compare_piece(std::uint64_t first, std::span<const T> a, std::span<const T> b,
                       value_differences& found) const
    {
        if constexpr (!std::is_same_v<T, std::string>) {
            const void* const bytes = a.data();
            if (std::memcmp(bytes, b.data(), a.size_bytes()) == 0) return;
        }
        for (std::size_t i = 0; i != a.size(); ++i) {
            if (!tolerance_.accepts(a[i], b[i])) add(first + i, a[i], b[i], found);
        }
    }

    template <class T>
    static void add(std::uint64_t at, const T& a, const T& b, value_differences& found)
    {
        if (found.count++ == 0) {
            found.first = at;
            found.values = both(a, b);
        }
        if constexpr (is_number<T>) {
            const long double difference =
                std::abs(static_cast<long double>(a) - static_cast<long double>(b));
            if (std::isfinite(difference)) found.largest = std::max(found.largest, difference);
        }
    }

    // Reads numbers of any type.
    using number_reader = std::function<void(std::uint64_t first, std::span<long double> to)>;

    number_reader numbers_of(const compared_file& in, const selected_channel& c)
    {
        number_reader result;
        static_cast<void>(tdms::with_type(c.type, [&]<class T>() {
            if constexpr (is_number<T>) result = this->template numbers_as<T>(in, c);
        }));
        return result;
    }

    template <class T>
    number_reader numbers_as(const compared_file& in, const selected_channel& c)
    {
        const auto from = std::make_shared<piece_reader<T>>(c.channel, *shown_);
        return [&in, from](std::uint64_t first, std::span<long double> to) {
            std::ranges::copy(read_from(in, [&] { return from->read(first, to.size()); }),
                              to.begin());
        };
    }

    void compare_numbers(const channel_pair& of, value_differences& found)
    {
        constexpr std::uint64_t most = 1 << 14;
        const number_reader read_a = numbers_of(a_, of.a);
        const number_reader read_b = numbers_of(b_, of.b);
        std::vector<long double> a;
        std::vector<long double> b;
        for (std::uint64_t first = 0; first != of.count && !is_decided(found);) {
            const std::uint64_t count = std::min(of.count - first, most);
            a.resize(count);
            b.resize(count);
            read_a(first, a);
            read_b(first, b);
            compare_piece<long double>(first, a, b, found);
            first += count;
        }
    }

    const diff_options& wanted_;
    tolerance tolerance_;
    const compared_file& a_;
    const compared_file& b_;
    output out_;
    std::optional<progress> shown_;
    // Reported at the end, so that they do not run into the progress.
    std::vector<read_failure> failures_;
    bool equal_ = true;
};

}  // namespace

bool diff(const diff_options& wanted)
{
    if (wanted.first == "-" && wanted.second == "-") {
        throw usage_error("only one of the two files can be standard input");
    }
    std::vector<std::unique_ptr<compared_file>> files;
    const auto open = [&](const std::string& name) {
        files.push_back(std::make_unique<compared_file>(name));
        return true;
    };
    if (!for_each_file({wanted.first, wanted.second}, open)) return false;
    bool all_well = comparison(wanted, *files[0], *files[1]).run();
    for (const auto& each : files) {
        all_well = report_rest(each->name, each->from, each->file, false) && all_well;
    }
    return all_well;
}

}  // namespace tool
