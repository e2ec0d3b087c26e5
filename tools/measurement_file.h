#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "console.h"
#include "core/data_types.h"
#include "input.h"
#include "value_text.h"

namespace tool {

/// The library's message for a status, and the status.
std::string message_of(int status);

std::string type_name(int type);

#define TDMS_TOOL_ALTERNATIVE(suffix, type, code) type,
/// A property's value; none if the library knows only its type.
using property_value =
    std::variant<std::monostate, TDMS_NUMBER_ELEMENTS(TDMS_TOOL_ALTERNATIVE) nanoseconds,
                 std::string>;
#undef TDMS_TOOL_ALTERNATIVE

struct property {
    std::string name;
    int type;
    property_value value;
};
using property_list = std::vector<property>;

struct channel {
    void* handle;
    std::string name;  // GROUP/CHANNEL, with the group's name as it is
    std::size_t group_size;
    int type;
    std::uint64_t count;  // of the values that can be read
    std::uint64_t lost;   // of those that the file states beside them
    property_list properties;

    std::string_view own_name() const { return std::string_view(name).substr(group_size + 1); }
};

struct group {
    std::string name;
    property_list properties;
    std::vector<channel> channels;
};

template <class T>
struct value_array {
    std::unique_ptr<T[]> items;

    T at(std::size_t i) const { return items[i]; }
};

struct time_values {
    std::unique_ptr<std::int64_t[]> counts;

    nanoseconds at(std::size_t i) const { return {counts[i]}; }
};

struct string_values {
    std::unique_ptr<char[]> bytes;
    std::vector<const char*> texts;  // each string's beginning, and the end of the last one

    std::string_view at(std::size_t i) const
    {
        return {texts[i], static_cast<std::size_t>(texts[i + 1] - texts[i] - 1)};
    }
};
#define TDMS_TOOL_ALTERNATIVE(suffix, type, code) value_array<type>,
using channel_values =
    std::variant<TDMS_NUMBER_ELEMENTS(TDMS_TOOL_ALTERNATIVE) time_values, string_values>;
#undef TDMS_TOOL_ALTERNATIVE

/// A file that the library opened for reading, and its tree. Every status becomes a failure.
class measurement_file {
  public:
    explicit measurement_file(const input& from);

    property_list properties;
    std::vector<group> groups;

  private:
    struct closer {
        void operator()(void* file) const { tdms_close(&file); }
    };
    std::unique_ptr<void, closer> handle_;
};

/// Reads a range of a channel's values.
channel_values read_values(const channel& c, std::uint64_t first, std::uint64_t count);

/// The same of a channel of numbers or booleans, as doubles.
std::vector<double> read_numbers(const channel& c);

/// How many values of a channel are lost, and why. REQUIRES: there are any.
std::string lost_values(const channel& c);

/// The channels that are wanted: each name is a GROUP/CHANNEL, or else a GROUP for all channels in
/// it. No names at all mean all channels. Throws a usage_error for a name that is neither.
struct selected_channel {
    const group* owner;
    const channel* chosen;
};
std::vector<selected_channel> select(const measurement_file& file,
                                     const std::vector<std::string>& names);

}  // namespace tool
