#include "writer/unsaved.h"

#include <algorithm>
#include <limits>

#include "core/object_path.h"

namespace tdms_impl {
namespace {

constexpr std::uint64_t most_in_32_bits = std::numeric_limits<std::uint32_t>::max();

}  // namespace

bool has_new(const property_map& properties)
{
    return std::any_of(properties.begin(), properties.end(), is_new);
}

bool is_listed(const channel& c)
{
    return c.group->file->segment_count > c.saves_at_origin;
}

// The first save of a file lists all groups; later ones of save_file() only those with properties.
bool is_listed(const group& g)
{
    return g.listed || (g.saves_at_origin == 0 && g.file->segment_count != 0);
}

bool has_something_new(const group& g)
{
    return !is_listed(g) || has_new(g.properties);
}

bool has_something_new(const channel& c)
{
    return is_unsaved(c) || !is_listed(c) || has_new(c.properties);
}

bool reads_back(const property_map& properties)
{
    return std::all_of(properties.begin(), properties.end(), [](const auto& entry) {
        return !is_new(entry) || (entry.first.size() <= most_in_32_bits &&
                                  entry.second->data.size() <= most_in_32_bits);
    });
}

bool reads_back(const group& g)
{
    const bool path_fits = is_listed(g) || (g.path.size() <= most_in_32_bits &&
                                            parse_object_path(g.path).kind == object_kind::group);
    return path_fits && reads_back(g.properties);
}

bool reads_back(const channel& c)
{
    if (!is_listed(c)) {
        const object_path_parts parts = parse_object_path(c.path);
        const bool fits = c.path.size() <= most_in_32_bits && parts.kind == object_kind::channel &&
                          parts.group_path == c.group->path;
        if (!fits) return false;
    }
    const bool values_fit = c.data_type != TDMS_TYPE_STRING || c.data.size() <= most_in_32_bits;
    return values_fit && reads_back(c.properties);
}

}  // namespace tdms_impl
