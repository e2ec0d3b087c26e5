#include "files/channel_selection.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

#include "console/report.h"
#include "console/text.h"

namespace tool {
namespace {

// How many characters must be changed, added or removed to turn one text into the other.
std::size_t edit_distance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i != one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j != other.size(); ++j) {
            const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// The channel or group that was probably meant; empty if no name is similar.
std::string similar_name(const tdms::file& file, std::string_view name)
{
    std::string best;
    std::size_t least = std::max<std::size_t>(name.size() / 3, 2) + 1;
    const auto consider = [&](const std::string& candidate, std::string_view own) {
        const bool is_begin = candidate.starts_with(name) || own.starts_with(name);
        const std::size_t distance = own == name ? 0
                                     : is_begin  ? 1
                                                 : edit_distance(name, candidate);
        if (distance >= least) return;
        least = distance;
        best = candidate;
    };
    for (const tdms::group& g : file.groups()) {
        const std::string group = g.name();
        consider(group, group);
        for (const tdms::channel& c : g.channels()) {
            const std::string own = c.name();
            std::string full = group + '/';
            full.append(own);
            consider(full, own);
        }
    }
    return best;
}

bool add_group(std::vector<selected_channel>& to, const tdms::group& g)
{
    for (const tdms::channel& c : g.channels()) to.emplace_back(g, c);
    return true;
}

bool add_channel(std::vector<selected_channel>& to, const tdms::group& g, const tdms::channel& c)
{
    to.emplace_back(g, c).named = true;
    return true;
}

// Adds the channels of a name as it is in the file. Group names have no slash.
bool add_exact(std::vector<selected_channel>& to, const tdms::file& file, std::string_view name)
{
    const std::size_t slash = name.find('/');
    const std::string_view group = name.substr(0, slash);
    if (!file.contains(group)) return false;
    const tdms::group g = file[group];
    if (slash == std::string_view::npos) return add_group(to, g);
    const std::string_view own = name.substr(slash + 1);
    return g.contains(own) && add_channel(to, g, g[own]);
}

// Adds the channels of a name that is written as by as_argument().
bool add_escaped(std::vector<selected_channel>& to, const tdms::file& file, std::string_view name)
{
    for (const tdms::group& g : file.groups()) {
        const std::string group = g.name();
        if (as_argument(group) == name) return add_group(to, g);
        for (const tdms::channel& c : g.channels()) {
            if (as_argument(group + '/' + c.name()) == name) return add_channel(to, g, c);
        }
    }
    return false;
}

}  // namespace

std::vector<selected_channel> select(const tdms::file& file, const std::vector<std::string>& names)
{
    if (names.empty()) return all_channels(file);
    std::vector<selected_channel> found;
    for (const std::string& name : names) {
        if (add_exact(found, file, name) || add_escaped(found, file, name)) continue;
        const std::string similar = similar_name(file, name);
        throw usage_error("the file has no channel or group " + in_quotes(name) +
                          (similar.empty() ? "; see tdms info --names"
                                           : "; did you mean " + in_quotes(similar) + "?"));
    }
    return found;
}

}  // namespace tool
