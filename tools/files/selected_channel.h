#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tdms.hpp>
#include <vector>

namespace tool {

/// A channel, with the facts about it that are needed again and again.
struct selected_channel {
    selected_channel(tdms::group in, tdms::channel one);

    /// Counts the values again, after a refresh.
    void count_values();

    /// GROUP/CHANNEL
    std::string name() const { return group.name() + '/' + channel.name(); }

    tdms::group group;
    tdms::channel channel;
    int type = TDMS_TYPE_VOID;
    std::uint64_t count = 0;  // of the values that can be read
    std::uint64_t lost = 0;   // of the other values that the file states
    bool named = false;       // on the command line, itself and not only by its group
};

/// All channels of a group, or of a file.
std::vector<selected_channel> channels_of(const tdms::group& g);
std::vector<selected_channel> all_channels(const tdms::file& file);

/// How many values of a channel are lost, and why. REQUIRES: some are.
std::string lost_values(const selected_channel& c);

/// The value of a string property; empty if the object has no such property.
std::string string_property(const tdms::object& of, std::string_view name);

}  // namespace tool
