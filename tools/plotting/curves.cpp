#include "plotting/curves.h"

#include <algorithm>
#include <map>

#include "console/report.h"
#include "console/text.h"
#include "core/data_types.h"
#include "files/channel_selection.h"
#include "files/group_times.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

// An empty name would not be seen.
std::string named(const std::string& name)
{
    return name.empty() ? "(no name)" : name;
}

std::string own_label(const selected_channel& c)
{
    const std::string name = string_property(c.channel, "name");
    return named(name.empty() ? c.channel.name() : name);
}

std::uint64_t stored_value_size(const selected_channel& c)
{
    return tdms_impl::DataSize.at(static_cast<std::uint32_t>(c.type));
}

// Whether the time of every sample number can be drawn.
bool is_usable(double rate)
{
    return is_drawable(rate) && is_drawable(0x1p64 / rate);
}

}  // namespace

bool curve::has_numbers() const
{
    const auto has_number = [](const envelope_cell& c) { return c.low <= c.high; };
    return std::ranges::any_of(trace.cells(), has_number);
}

bool can_be_drawn(int type)
{
    return type != TDMS_TYPE_STRING && type != TDMS_TYPE_TIMESTAMP;
}

std::vector<selected_channel> drawable_channels(
    const tdms::file& file, const std::vector<std::string>& names,
    const std::function<void(const selected_channel&)>& other)
{
    std::vector<selected_channel> drawable;
    for (const selected_channel& c : select(file, names)) {
        const auto same = std::ranges::find(drawable, c.channel, &selected_channel::channel);
        if (same != drawable.end()) {
            same->named = same->named || c.named;
        } else if (can_be_drawn(c.type) && c.count != 0) {
            drawable.push_back(c);
        } else {
            other(c);
        }
    }
    return drawable;
}

curve_set::curve_set(const std::vector<selected_channel>& channels, std::size_t columns,
                     const time_limits& limits)
    : limits_(limits)
{
    for (const selected_channel& c : channels) add(c, columns);
    label_curves();
}

void curve_set::add(const selected_channel& c, std::size_t columns)
{
    family& f = family_of(c);
    curve added{c, own_label(c),     string_property(c.channel, "unit"), x_kind::samples,
                1, envelope(columns)};
    if (f.times) {
        added.kind = x_kind::time;
    } else if (const auto rate = sampling_rate_of(c); rate && is_usable(*rate)) {
        added.kind = x_kind::seconds;
        added.rate = *rate;
    }
    added.next = f.first;
    f.members.push_back(curves_.size());
    curves_.push_back(std::move(added));
}

// The channels of a group usually have the same length, and share its times.
curve_set::family& curve_set::family_of(const selected_channel& c)
{
    const std::string group = c.group.name();
    for (family& f : families_) {
        const bool as_long =
            f.times ? f.times->count >= c.count : curves_[f.members.front()].from.count <= c.count;
        if (f.group == group && as_long) return f;
    }
    family& added = families_.emplace_back(family{group, time_channel_of(c.group, c.count), {}});
    if (limits_.since || limits_.until) limit(added, c, limits_);
    return added;
}

void curve_set::limit(family& f, const selected_channel& c, const time_limits& limits)
{
    f.times = required_times(c.group, c.count);
    if (limits.since) f.first = row_at(*f.times, *limits.since);
    if (limits.until) f.end = row_at(*f.times, *limits.until);
    // Rows are found by bisection, which fails if the times do not ascend.
    if (ascend(*f.times, f.first, std::min(f.end, f.times->count))) return;
    throw failure(in_quotes(f.times->name()) + ": the times do not ascend");
}

// Curves with the same label get the group's name before it, and if that does not distinguish them,
// the names of group and channel.
void curve_set::label_curves()
{
    const auto relabel = [this](const auto& label_of) {
        std::map<std::string, int> used;
        for (const curve& c : curves_) ++used[c.label];
        for (curve& c : curves_) {
            if (used[c.label] > 1) c.label = label_of(c);
        }
    };
    relabel([](const curve& c) { return named(c.from.group.name()).append("/").append(c.label); });
    relabel([](const curve& c) { return c.from.name(); });
}

// The row after the last one to read.
std::uint64_t curve_set::end_of(const family& f, const curve& c)
{
    if (c.unreadable) return c.next;
    const std::uint64_t end = f.times ? std::min(c.from.count, f.times->count) : c.from.count;
    return std::max(c.next, std::min(end, f.end));
}

std::uint64_t curve_set::bytes_to_read() const
{
    std::uint64_t bytes = 0;
    for (const family& f : families_) {
        std::uint64_t rows = 0;
        for (const std::size_t i : f.members) {
            const std::uint64_t more = end_of(f, curves_[i]) - curves_[i].next;
            bytes += more * stored_value_size(curves_[i].from);
            rows = std::max(rows, more);
        }
        if (f.times) bytes += rows * stored_value_size(*f.times);
    }
    return bytes;
}

void curve_set::read(const error_handler& on_error)
{
    progress shown("reading", bytes_to_read());
    piece rows;
    for (family& f : families_) {
        while (find_rows(f, rows)) read(f, rows, shown, on_error);
        for (const std::size_t i : f.members) curves_[i].longest_step = f.steps.longest();
    }
    for (curve& c : curves_) c.trace.settle();
}

// Finds the next rows of a family. @return false if there are none
bool curve_set::find_rows(const family& f, piece& rows) const
{
    rows.first = ~std::uint64_t{0};
    rows.end = 0;
    for (const std::size_t i : f.members) {
        if (curves_[i].next == end_of(f, curves_[i])) continue;
        rows.first = std::min(rows.first, curves_[i].next);
        rows.end = std::max(rows.end, end_of(f, curves_[i]));
    }
    if (rows.first >= rows.end) return false;
    rows.end = std::min(rows.end, rows.first + rows_at_once);
    return true;
}

void curve_set::read(family& f, piece& rows, progress& shown, const error_handler& on_error)
{
    const auto read = [&](const selected_channel& c, std::uint64_t first, auto values) {
        try {
            c.channel.read(first, values);
            shown.add(values.size() * stored_value_size(c));
            return true;
        } catch (const tdms::error& e) {
            on_error(c, message_of(e.status()));
            return false;
        }
    };
    const std::span times(rows.times.get(), rows.end - rows.first);
    const bool timed = !f.times || read(*f.times, rows.first, times);
    if (f.times && timed) f.steps.take_in(rows.first, times);
    for (const std::size_t i : f.members) {
        curve& c = curves_[i];
        const std::uint64_t end = std::min(rows.end, end_of(f, c));
        if (c.next >= end) continue;
        const std::span values(rows.values.get(), end - c.next);
        c.unreadable = !timed || !read(c.from, c.next, values);
        if (!c.unreadable) add_samples(c, values, rows);
    }
}

void curve_set::add_samples(curve& c, std::span<const double> values, const piece& rows)
{
    if (c.kind == x_kind::time) {
        const tdms::time* time = rows.times.get() + (c.next - rows.first);
        for (const double y : values) c.trace.add((time++)->time_since_epoch().count(), y);
        c.next += values.size();
    } else {
        for (const double y : values) c.trace.add(static_cast<std::int64_t>(c.next++), y);
    }
}

bool curve_set::count_values()
{
    for (family& f : families_) {
        if (f.times) f.times->count_values();
        for (const std::size_t i : f.members) curves_[i].from.count_values();
    }
    return bytes_to_read() != 0;
}

std::string curve_set::time_name() const
{
    std::string name;
    for (const family& f : families_) {
        if (!f.times) continue;
        const std::string own = f.times->channel.name();
        if (!name.empty() && own != name) return "time";
        name = own;
    }
    return name.empty() ? "time" : shortened(printable(name), 40);
}

}  // namespace tool
