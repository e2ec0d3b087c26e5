#include <algorithm>
#include <optional>

#include "commands.h"
#include "gnuplot.h"
#include "new_file.h"
#include "plot_script.h"
#include "value_text.h"

namespace tool {
namespace {

std::string text_property(const channel& c, std::string_view name)
{
    for (const property& p : c.properties) {
        const auto* const text = std::get_if<std::string>(&p.value);
        if (p.name == name && text != nullptr) return *text;
    }
    return {};
}

// The group's first timestamp channel that can be read and has a time for each of `count` samples.
// The file of a recording that was killed may have more.
std::optional<time_axis> times_of(const group& g, std::size_t count)
{
    for (const channel& c : g.channels) {
        if (c.type != TDMS_TYPE_TIMESTAMP || c.count < count) continue;
        try {
            const channel_values read = read_values(c, 0, c.count);
            const auto& times = std::get<time_values>(read);
            time_axis axis{std::string(c.own_name()), times.at(0), {}};
            for (std::uint64_t i = 0; i != c.count; ++i) {
                axis.seconds.push_back(1e-9 * static_cast<double>(times.at(i).count));
            }
            return axis;
        } catch (const failure&) {
            continue;  // perhaps another one
        }
    }
    return std::nullopt;
}

// The curves of the channels wanted; `all_read` becomes false unless each of them is a complete
// one.
std::vector<curve> read_curves(const measurement_file& file, const plot_options& wanted,
                               bool& all_read)
{
    std::vector<curve> curves;
    for (const auto& [owner, chosen] : select(file, wanted.channels)) {
        const channel& c = *chosen;
        const bool drawable = c.type != TDMS_TYPE_STRING && c.type != TDMS_TYPE_TIMESTAMP;
        const auto& names = wanted.channels;
        const bool named = std::find(names.begin(), names.end(), c.name) != names.end();
        // A group's name means its channels with something to draw.
        if (!named && (!drawable || (c.count == 0 && c.lost == 0))) continue;
        const auto complain = [&](const std::string& message) {
            report(wanted.file, in_quotes(c.name) + ": " + message);
            all_read = false;
        };
        if (c.lost != 0) complain(lost_values(c));
        try {
            if (!drawable)
                throw failure("values of type " + type_name(c.type) + " cannot be drawn");
            std::vector<double> values = read_numbers(c);
            if (std::none_of(values.begin(), values.end(), is_drawable)) {
                throw failure("it has no values to draw");
            }
            std::string label = text_property(c, "name");
            if (label.empty()) label = c.own_name();
            curves.push_back(
                {owner, std::move(label), text_property(c, "unit"), std::move(values)});
        } catch (const failure& e) {
            complain(e.what());
        }
    }
    return curves;
}

// The times of all curves' groups; none, unless all of them have their times.
time_axes read_times(const std::vector<curve>& curves)
{
    std::map<const group*, std::size_t> longest;
    for (const curve& c : curves) longest[c.owner] = std::max(longest[c.owner], c.values.size());
    time_axes times;
    for (const auto& [owner, count] : longest) {
        std::optional<time_axis> axis = times_of(*owner, count);
        if (!axis) return {};
        times.emplace(owner, std::move(*axis));
    }
    return times;
}

}  // namespace

bool plot(const plot_options& wanted)
{
    check_picture_name(wanted.target);
    const input from(wanted.file);
    if (!wanted.target.empty()) from.reject_as_target(wanted.target);
    const measurement_file file(from);
    bool all_read = true;
    const std::vector<curve> curves = read_curves(file, wanted, all_read);
    if (curves.empty()) throw failure("there is nothing to draw");
    const time_axes times = read_times(curves);
    const std::string title = wanted.file.substr(wanted.file.rfind('/') + 1);
    const std::string script = plot_script(curves, times, title, wanted.target);
    if (wanted.target.empty()) {
        output out;
        run_gnuplot(script, [&out](std::string_view text) { out.put(text); });
        out.put('\n');  // which gnuplot leaves out
        out.flush();
    } else {
        new_file picture(wanted.target);
        run_gnuplot(script, [&picture](std::string_view bytes) { picture.write(bytes); });
        picture.commit();
    }
    return all_read;
}

}  // namespace tool
