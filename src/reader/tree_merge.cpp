#include "reader/tree_merge.h"

#include <utility>

namespace tdms_impl {
namespace {

void merge(property_map& into, property_map& added) noexcept
{
    for (auto& [name, stored] : added) {
        const auto old = into.find(name);
        if (old == into.end()) continue;
        const bool same =
            old->second->data_type == stored->data_type && old->second->data == stored->data;
        if (same) continue;
        std::swap(old->second->data_type, stored->data_type);
        old->second->data.swap(stored->data);
    }
    into.merge(added);
}

void merge(group& into, group& added) noexcept
{
    merge(into.properties, added.properties);
    into.unquoted |= added.unquoted;
    for (auto& [path, c] : added.channels) {
        c.group = &into;
        channel* const grown = into.channels.find(path);
        if (grown == nullptr) continue;
        grown->data_type = c.data_type;
        grown->chunk_count = c.chunk_count;
        grown->value_count += c.value_count;
        merge(grown->properties, c.properties);
    }
    into.channels.take_from(added.channels);
}

}  // namespace

void merge(option& into, option& added) noexcept
{
    merge(into.properties, added.properties);
    into.unquoted |= added.unquoted;
    for (auto& [path, g] : added.groups) {
        g.file = &into;
        if (group* const old = into.groups.find(path)) merge(*old, g);
    }
    into.groups.take_from(added.groups);
}

}  // namespace tdms_impl
