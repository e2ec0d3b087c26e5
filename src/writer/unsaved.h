#pragma once

#include "writer/segment_builder.h"

// What a tree holds that no file has yet.

namespace tdms_impl {

bool has_new(const property_map& properties);

/// Whether the file lists the object. Everything in memory at a save is listed.
bool is_listed(const channel& c);
bool is_listed(const group& g);

bool has_something_new(const group& g);
bool has_something_new(const channel& c);

/// Calls `use(c)` for each channel that has something new, in the order in which a file lists them.
template <class Use>
void for_each_changed_channel(option& file, Use use)
{
    for (auto& [group_path, g] : file.groups) {
        for (auto& [channel_path, c] : g.channels) {
            if (has_something_new(c)) use(c);
        }
    }
}

/// Whether a reader gives back what is new. The functions that accept any name and any string can
/// add what no reader gives back.
bool reads_back(const property_map& properties);
bool reads_back(const group& g);
bool reads_back(const channel& c);

}  // namespace tdms_impl
