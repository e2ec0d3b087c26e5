#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "console.h"
#include "core/data_types.h"
#include "input.h"
#include "text_values.h"

namespace tool {

/// The library's message for a status, and the status.
std::string message_of(int status);

std::string type_name(int type);

/// The bytes of a value of a type in a file; 0 if the type is unknown or has no fixed size.
std::uint32_t size_of_type(std::uint32_t type);

/// Calls the library for a channel's values. A status and an exception become a failure.
template <class Call>
void read_or_throw(Call call)
{
    try {
        const int status = call();
        if (status < 0) throw failure(message_of(status));
    } catch (const std::out_of_range& e) {
        throw failure(std::string("a segment mixes this group's objects with foreign ones (") +
                      e.what() + ")");
    } catch (const std::bad_alloc&) {
        throw failure("out of memory");
    }
}

#define TDMS_TOOL_ALTERNATIVE(suffix, type, code) type,
/// A property's value; none if the library knows only its type.
using property_value =
    std::variant<std::monostate, TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_ALTERNATIVE) std::string>;
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
    std::uint64_t count;
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
    std::uint64_t count;
};
#define TDMS_TOOL_ALTERNATIVE(suffix, type, code) value_array<type>,
using channel_values = std::variant<TDMS_FIXED_SIZE_ELEMENTS(TDMS_TOOL_ALTERNATIVE) text_values>;
#undef TDMS_TOOL_ALTERNATIVE

/// A file that the library opened for reading, and its tree. Whatever the library refuses, by a
/// status or by an exception, becomes a failure in words.
class measurement_file {
  public:
    explicit measurement_file(const input& from);

    property_list properties;
    std::vector<group> groups;

    /// All values of a channel.
    channel_values read(const channel& c) const;

  private:
    struct closer {
        void operator()(void* file) const { close_file(&file); }
    };
    std::uint64_t size_;
    std::unique_ptr<void, closer> handle_;
};

/// Throws a failure if the library cannot find the channel's values; reads none of them.
void locate(const channel& c);

/// The channels that are wanted: each name is a GROUP/CHANNEL, or else a GROUP for all channels in
/// it. No names at all stand for all channels. Throws a usage_error for a name that is neither.
struct selected_channel {
    const group* owner;
    const channel* chosen;
};
std::vector<selected_channel> select(const measurement_file& file,
                                     const std::vector<std::string>& names);

}  // namespace tool
