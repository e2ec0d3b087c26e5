#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "files/input.h"

namespace tool {

/// What a failed call means, in plain words; "not a TDMS file".
std::string message_of(int status, int reason = 0);

std::string type_name(int type);

/// The type of a property, a ::tdms_type.
int type_of(const tdms::property_value& value);

/// Opens what is intact of a file.
tdms::file open_intact(const input& from);

/// Reports the damage that follows the intact segments, if any does.
/// @return whether there is none
bool report_damage(const std::string& name, const input& from, const tdms::file& file);

/// Reports what follows the intact segments, if anything does: a segment that is not complete, or
/// damage.
/// @return false if that is damage, or if the file is required to be complete
bool report_rest(const std::string& name, const input& from, const tdms::file& file,
                 bool must_be_complete);

/// A channel, with what is asked of it again and again.
struct selected_channel {
    selected_channel(tdms::group in, tdms::channel one);

    /// Counts the values again, after a refresh.
    void count_values();

    /// GROUP/CHANNEL
    std::string name() const { return group.name() + '/' + channel.name(); }

    tdms::group group;
    tdms::channel channel;
    int type;
    std::uint64_t count;  // of the values that can be read
    std::uint64_t lost;   // of those that the file states beside them
    bool named = false;   // itself, not by its group
};

/// All channels of a group, or of a file.
std::vector<selected_channel> channels_of(const tdms::group& g);
std::vector<selected_channel> all_channels(const tdms::file& file);

/// The channels that are wanted: each name is a GROUP/CHANNEL, or else a GROUP for all channels in
/// it, as they are or as as_argument() has them. No names at all mean all channels. Throws a
/// usage_error, with a suggestion, for a name that is neither.
std::vector<selected_channel> select(const tdms::file& file, const std::vector<std::string>& names);

/// How many values of a channel are lost, and why. REQUIRES: there are any.
std::string lost_values(const selected_channel& c);

/// A string property of an object; empty if it has none of that name.
std::string string_property(const tdms::object& of, std::string_view name);

}  // namespace tool
