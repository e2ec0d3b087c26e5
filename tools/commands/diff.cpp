#include <algorithm>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "commands/commands.h"
#include "comparison/compared_file.h"
#include "comparison/difference_text.h"
#include "comparison/tolerance.h"
#include "comparison/value_comparison.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/text.h"

namespace tool {
namespace {

// Compares two trees, and reports each difference on a line.
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
            differ(where, with_commas(a.count) + " and " + number_of(b.count, "value"));
        }
        note_lost(a_, a);
        note_lost(b_, b);
        if (!is_decided()) compare_values(where, a, b);
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

    void compare_values(const std::string& where, const selected_channel& a,
                        const selected_channel& b)
    {
        value_comparison values({a_, a}, {b_, b}, tolerance_, wanted_.quiet, *shown_);
        try {
            values.run();
        } catch (const read_failure& e) {
            failures_.push_back({e.in, in_quotes(a.name()) + ": " + e.message});
        }
        const value_differences found = values.differences();
        if (found.count == 0) return;
        std::string text = with_commas(found.count) + " of ";
        text.append(number_of(std::min(a.count, b.count), "value"));
        text.append(found.count == 1 ? " differs" : " differ");
        if (is_number_type(a.type) && !tolerance_.is_exact()) {
            text.append(" by more than the tolerance");
        }
        text.append(", first at ").append(std::to_string(found.first)).append(": ");
        text.append(found.values);
        if (!found.largest.empty()) text.append("; largest difference ").append(found.largest);
        differ(where, text);
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
    bool succeeded = comparison(wanted, *files[0], *files[1]).run();
    for (const auto& each : files) {
        succeeded = report_rest(each->name, each->from, each->file, false) && succeeded;
    }
    return succeeded;
}

}  // namespace tool
