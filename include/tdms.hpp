/**
 * @file tdms.hpp
 * @brief The library for C++20: objects as types, failures as exceptions, files that close
 *        themselves. A header over the functions of tdms.h; programs link the same library.
 *
 *     tdms::file f("run.tdms", "w");
 *     tdms::channel c = f.add_group("vibration").add_channel("acc2");
 *     c.property("sampling rate", 25600.0);
 *     c.append<double>(samples);
 *     f.save();
 *
 * Objects: tdms::file, tdms::group and tdms::channel refer to an object of an open file. A copy
 * refers to the same object, and `const` protects the variable, not the object. The file stays open
 * as long as any of them exists, or until tdms::file::close(); every later use of one throws
 * #TDMS_FILE_HANDLE. Closing does not save.
 *
 * Failures: a failed call throws tdms::error and changes nothing. The comments here name the
 * statuses that matter most; tdms.h documents all of them, with the function that is called.
 * Allocating what is returned to the caller, such as a vector of values, can throw std::bad_alloc
 * or std::length_error.
 *
 * Strings: names and strings are bytes, usually UTF-8. In tdms.h, the names of groups and channels
 * and the strings of channels end at a NUL, so new ones that contain a NUL are rejected with
 * #TDMS_ARGUMENT.
 *
 * Threads: one file, with everything in it and all copies, is for one thread at a time; different
 * files may be used by different threads at once.
 */
#ifndef TDMS_HPP
#define TDMS_HPP

#if __cplusplus < 202002L
#error "tdms.hpp needs C++20, which most compilers turn on by -std=c++20"
#endif

#include <tdms.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tdms {

/// A moment in nanoseconds since 1970-01-01T00:00:00 UTC, in the years 1677 to 2262.
using time = std::chrono::sys_time<std::chrono::nanoseconds>;

/// The value of a property. std::monostate is a property without a value, which some files have;
/// none can be created.
using property_value = std::variant<std::monostate, std::int8_t, std::int16_t, std::int32_t,
                                    std::int64_t, std::uint8_t, std::uint16_t, std::uint32_t,
                                    std::uint64_t, float, double, bool, std::string, time>;

/// A call that failed. what() names the object, then gives the message of the status, and the
/// system's reason where there is one.
class TDMS_API error : public std::runtime_error {
  public:
    /// @param subject what the call was about
    /// @param reason errno after the call
    error(int status, const std::string& subject, int reason)
        : std::runtime_error(without_nul(subject) + ": " + message(status, reason)),
          status_(status),
          reason_(by_system(status) ? reason : 0)
    {
    }

    /// The ::tdms_status, less than 0.
    int status() const noexcept { return status_; }

    /// The system's errno with #TDMS_FILE_PATH and #TDMS_WRITE, otherwise 0.
    int system_error() const noexcept { return reason_; }

  private:
    static bool by_system(int status) { return status == TDMS_FILE_PATH || status == TDMS_WRITE; }

    // what() ends at the first NUL.
    static std::string without_nul(std::string text)
    {
        std::replace(text.begin(), text.end(), '\0', '?');
        return text;
    }

    static std::string message(int status, int reason)
    {
        std::string text = tdms_status_text(status);
        if (status == TDMS_FILE_PATH && reason == EWOULDBLOCK) {
            text.append(" Another program is writing to it.");
        } else if (by_system(status)) {
            text.append(" ").append(std::generic_category().message(reason)).append(".");
        }
        return text;
    }

    int status_;
    int reason_;
};

class property_map;

/// What this header itself needs; not for programs.
namespace detail {

// The element types: suffix of the functions, type in C++, code, member of tdms_value.
#define TDMS_HPP_ELEMENTS(X)                  \
    X(int8, std::int8_t, INT8, integer)       \
    X(int16, std::int16_t, INT16, integer)    \
    X(int32, std::int32_t, INT32, integer)    \
    X(int64, std::int64_t, INT64, integer)    \
    X(uint8, std::uint8_t, UINT8, natural)    \
    X(uint16, std::uint16_t, UINT16, natural) \
    X(uint32, std::uint32_t, UINT32, natural) \
    X(uint64, std::uint64_t, UINT64, natural) \
    X(float, float, FLOAT, number)            \
    X(double, double, DOUBLE, number)         \
    X(bool, bool, BOOL, boolean)              \
    X(nanoseconds, time, TIMESTAMP, nanoseconds)

static_assert(sizeof(time) == sizeof(std::int64_t) && std::is_standard_layout_v<time>,
              "an array of times is an array of nanoseconds");

template <class T>
using raw_type = std::conditional_t<std::is_same_v<T, time>, std::int64_t, T>;

template <class Raw, class T>
Raw to_raw(T value)
{
    if constexpr (std::is_same_v<T, time>) {
        return static_cast<Raw>(value.time_since_epoch().count());
    } else if constexpr (std::is_same_v<T, bool>) {
        return value;
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<Raw>(value);
    } else {
        return Raw{value};
    }
}

template <class T, class Raw>
T from_raw(Raw value)
{
    if constexpr (std::is_same_v<T, time>) {
        return time(std::chrono::nanoseconds(value));
    } else {
        return static_cast<T>(value);
    }
}

// The functions of tdms.h for values of type T.
template <class T>
struct element;

#define TDMS_HPP_ELEMENT(suffix, cpp_type, code, member)                                       \
    template <>                                                                                \
    struct element<cpp_type> {                                                                 \
        static int read(void* channel, std::uint64_t first, std::uint64_t count, cpp_type* to) \
        {                                                                                      \
            return tdms_read_##suffix(channel, first, count,                                   \
                                      reinterpret_cast<raw_type<cpp_type>*>(to));              \
        }                                                                                      \
        static int append(void* channel, std::uint64_t count, const cpp_type* from)            \
        {                                                                                      \
            return tdms_append_##suffix(channel, count,                                        \
                                        reinterpret_cast<const raw_type<cpp_type>*>(from));    \
        }                                                                                      \
    };                                                                                         \
    inline tdms_value to_c(cpp_type value)                                                     \
    {                                                                                          \
        tdms_value result{};                                                                   \
        result.type = TDMS_TYPE_##code;                                                        \
        result.value.member = to_raw<decltype(result.value.member)>(value);                    \
        return result;                                                                         \
    }
TDMS_HPP_ELEMENTS(TDMS_HPP_ELEMENT)
#undef TDMS_HPP_ELEMENT

inline tdms_value to_c(std::monostate)
{
    return {};
}

inline tdms_value to_c(std::string_view text)
{
    tdms_value result{};
    result.type = TDMS_TYPE_STRING;
    result.value.string.text = text.data();
    result.value.string.length = text.size();
    return result;
}

inline property_value from_c(const tdms_value& from)
{
    switch (from.type) {
#define TDMS_HPP_CASE(suffix, cpp_type, code, member) \
    case TDMS_TYPE_##code:                            \
        return from_raw<cpp_type>(from.value.member);
        TDMS_HPP_ELEMENTS(TDMS_HPP_CASE)
#undef TDMS_HPP_CASE
        case TDMS_TYPE_STRING:
            return std::string(from.value.string.text, from.value.string.length);
        default:
            return {};
    }
}

template <class Use>
[[nodiscard]] bool with_type(int type, Use& use)
{
    switch (type) {
#define TDMS_HPP_CASE(suffix, cpp_type, code, member) \
    case TDMS_TYPE_##code:                            \
        use.template operator()<cpp_type>();          \
        return true;
        TDMS_HPP_ELEMENTS(TDMS_HPP_CASE)
#undef TDMS_HPP_CASE
        case TDMS_TYPE_STRING:
            use.template operator()<std::string>();
            return true;
        default:
            return false;
    }
}
#undef TDMS_HPP_ELEMENTS

template <class T>
concept fixed_size = requires
{
    element<T>::read;
};

template <class T>
concept integer = std::integral<T> && !std::same_as<T, bool>;

template <class T>
concept element_type = fixed_size<T> || std::same_as<T, std::string>;

// An open file, which all objects in it share.
struct open_file {
    explicit open_file(std::string where) : path(std::move(where)) {}
    open_file(const open_file&) = delete;
    open_file& operator=(const open_file&) = delete;
    ~open_file()
    {
        if (handle != nullptr) tdms_close(&handle);
    }

    std::string path;
    void* handle = nullptr;
    std::uint64_t rest = 0;
};

inline bool has_nul(std::string_view text)
{
    return text.find('\0') != std::string_view::npos;
}

// Never null, because the functions of tdms.h reject null.
inline const char* begin_of(std::string_view name)
{
    return name.data() == nullptr ? "" : name.data();
}

using name_getter = int(void*, const char**, std::uint64_t*);

inline std::string name_of(void* handle, name_getter* get)
{
    const char* name = nullptr;
    std::uint64_t length = 0;
    return get(handle, &name, &length) == 0 ? std::string(name, length) : std::string();
}

// The functions of tdms.h for the groups of a file, or the channels of a group.
struct children {
    int (*count)(void* parent);
    int (*list)(void* parent, void** handles);
    int (*find)(void* parent, const char* name, void** handle);
    int (*create)(void* parent, const char* name, void** handle);
    name_getter* name;
    int absent;
};
inline constexpr children groups = {get_num_group,     get_group,           tdms_find_group,
                                    tdms_create_group, tdms_get_group_name, TDMS_GROUP_HANDLE};
inline constexpr children channels = {get_num_channel,       get_channel,
                                      tdms_find_channel,     tdms_create_channel,
                                      tdms_get_channel_name, TDMS_CHANNEL_HANDLE};

}  // namespace detail

/// Calls a function template with the C++ type of a ::tdms_type:
///
///     tdms::with_type(c.type(), [&]<class T>() { print(c.read<T>()); });
///
/// @return false, without a call, for a type without values, such as #TDMS_TYPE_VOID
template <class Use>
[[nodiscard]] bool with_type(int type, Use use)
{
    return detail::with_type(type, use);
}

/// What files, groups and channels have in common.
class object {
  public:
    // Not movable: a variable that was moved from would refer to nothing.
    object(const object&) = default;
    object& operator=(const object&) = default;

    /// All properties.
    property_map properties() const;

    /// Reads a property as T, one of the types of property_value. T must be the property's type,
    /// with two exceptions: double reads any number or bool, and an integer type reads any integer
    /// that fits it. Otherwise throws #TDMS_DATATYPE; throws #TDMS_FILE_PROPERTY_NAME,
    /// #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME if there is none of that name.
    template <class T>
    T property(std::string_view name) const;

    /// Creates a property, or replaces it; see tdms_set_property().
    void property(std::string_view name, const property_value& value)
    {
        std::visit([&](const auto& v) { set_property(name, detail::to_c(v)); }, value);
    }
    template <std::convertible_to<std::string_view> Text>
    void property(std::string_view name, const Text& text)
    {
        if constexpr (std::is_pointer_v<Text>) {
            if (text == nullptr) fail(TDMS_ARGUMENT, name);
        }
        set_property(name, detail::to_c(std::string_view(text)));
    }

    // A null pointer is not a string.
    void property(std::string_view name, std::nullptr_t) = delete;

    /// The same object of the same open file.
    friend bool operator==(const object& a, const object& b) = default;

  protected:
    object(std::shared_ptr<detail::open_file> file, void* group, void* handle)
        : file_(std::move(file)), group_(group), handle_(handle)
    {
    }

    void* handle() const
    {
        if (file_->handle == nullptr) throw error(TDMS_FILE_HANDLE, file_->path, 0);
        return handle_;
    }

    // Nothing that can change errno may come between the call and this.
    void check(int status, std::string_view name = {}) const
    {
        if (status != 0) fail(status, name);
    }

    // `name` names the object, property or channel that the call was about, if there was one.
    [[noreturn]] void fail(int status, std::string_view name = {}) const
    {
        const int reason = errno;
        std::string subject = file_->path;
        if (file_->handle != nullptr && group_ != nullptr) {
            subject.append(": ").append(detail::name_of(group_, tdms_get_group_name));
            if (group_ != handle_) {
                subject.append("/").append(detail::name_of(handle_, tdms_get_channel_name));
            }
        }
        if (name.data() != nullptr) subject.append(": \"").append(name).append("\"");
        throw error(status, subject, reason);
    }

    std::vector<void*> list(const detail::children& of) const
    {
        void* const parent = handle();
        std::vector<void*> handles(static_cast<std::size_t>(std::max(0, of.count(parent))));
        of.list(parent, handles.data());
        return handles;
    }

    // @return null if there is nothing of that name
    void* find(const detail::children& of, std::string_view name) const
    {
        if (detail::has_nul(name)) {
            for (void* const child : list(of)) {
                if (detail::name_of(child, of.name) == name) return child;
            }
            return nullptr;
        }
        void* found = nullptr;
        const int status = of.find(handle(), std::string(name).c_str(), &found);
        if (status != of.absent) check(status, name);
        return found;
    }

    void* get(const detail::children& of, std::string_view name) const
    {
        void* const found = find(of, name);
        if (found == nullptr) fail(of.absent, name);
        return found;
    }

    void* create(const detail::children& of, std::string_view name) const
    {
        void* const parent = handle();
        if (detail::has_nul(name)) fail(TDMS_ARGUMENT, name);
        void* created = nullptr;
        check(of.create(parent, std::string(name).c_str(), &created), name);
        return created;
    }

    std::shared_ptr<detail::open_file> file_;
    void* group_;  // of a group itself, of a file null
    void* handle_;

  private:
    friend property_map;

    void set_property(std::string_view name, const tdms_value& value)
    {
        check(tdms_set_property(handle(), detail::begin_of(name), name.size(), &value), name);
    }
};

/// The properties of an object, like a map of names and values, in the byte order of the names. It
/// is a view, which shows every change. Iterators stay valid after changes.
class property_map {
  public:
    using key_type = std::string;
    using mapped_type = property_value;
    using value_type = std::pair<std::string, property_value>;

    /// Goes from one property to the next.
    class iterator {
      public:
        using iterator_concept = std::input_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = property_map::value_type;

        const value_type& operator*() const { return entry_; }
        const value_type* operator->() const { return &entry_; }
        iterator& operator++()
        {
            read_after(entry_.first.c_str(), entry_.first.size());
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const iterator& i, std::default_sentinel_t) { return i.at_end_; }

      private:
        friend property_map;
        explicit iterator(const object& owner) : owner_(owner) { read_after(nullptr, 0); }

        void read_after(const char* name, std::uint64_t length)
        {
            tdms_value value{};
            owner_.check(tdms_next_property(owner_.handle(), &name, &length, &value));
            at_end_ = name == nullptr;
            if (!at_end_) entry_ = {std::string(name, length), detail::from_c(value)};
        }

        object owner_;
        value_type entry_;
        bool at_end_ = false;
    };

    explicit property_map(const object& owner) : owner_(owner) {}

    iterator begin() const { return iterator(owner_); }
    static std::default_sentinel_t end() { return {}; }

    /// The number of properties, counted anew by each call.
    std::size_t size() const
    {
        std::size_t count = 0;
        for (auto i = begin(); i != end(); ++i) ++count;
        return count;
    }
    bool empty() const { return begin() == end(); }

    /// Whether there is a property of that name.
    bool contains(std::string_view name) const
    {
        tdms_value value{};
        return get(name, value) == 0;
    }

    /// Throws #TDMS_FILE_PROPERTY_NAME, #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME if
    /// there is no property of that name.
    property_value at(std::string_view name) const
    {
        tdms_value value{};
        owner_.check(get(name, value), name);
        return detail::from_c(value);
    }

    /// Creates a property, or replaces it.
    void insert_or_assign(std::string_view name, const property_value& value)
    {
        owner_.property(name, value);
    }

  private:
    int get(std::string_view name, tdms_value& value) const
    {
        return tdms_get_property(owner_.handle(), detail::begin_of(name), name.size(), &value);
    }

    object owner_;
};

inline property_map object::properties() const
{
    return property_map(*this);
}

template <class T>
T object::property(std::string_view name) const
{
    const property_value value = properties().at(name);
    const auto convert = [&](const auto& v) -> T {
        using Stored = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<Stored, T>) {
            return v;
        } else if constexpr (std::is_same_v<T, double> && std::is_arithmetic_v<Stored>) {
            return static_cast<T>(v);
        } else if constexpr (detail::integer<T> && detail::integer<Stored>) {
            if (std::in_range<T>(v)) return static_cast<T>(v);
        }
        fail(TDMS_DATATYPE, name);
    };
    return std::visit(convert, value);
}

/// A sequence of values of one type.
class channel : public object {
  public:
    /// A copy of the channel's name.
    std::string name() const { return detail::name_of(handle(), tdms_get_channel_name); }

    /// The type of the values, a ::tdms_type; #TDMS_TYPE_VOID as long as it has none.
    int type() const { return get_channel_datatype(handle()); }

    /// How many values can be read. Appended ones count once they are saved. Throws
    /// #TDMS_CHANNEL_DATA_READ if the values cannot be located.
    std::uint64_t size() const { return count().first; }

    /// How many values the file states but does not hold. Throws as size() does.
    std::uint64_t lost() const { return count().second; }

    /// Reads values.size() values from index `first` on, and replaces `values`. Throws #TDMS_RANGE
    /// if the range goes beyond the last value; #TDMS_CHANNEL_DATATYPE if the channel has another
    /// type than T, except that double reads any number or bool; and #TDMS_CHANNEL_DATA_READ if the
    /// device fails or the file was truncated: then `values` may hold some of the values.
    template <detail::element_type T>
    void read(std::uint64_t first, std::span<T> values) const
    {
        if constexpr (std::is_same_v<T, std::string>) {
            // Checks the whole range first, so that a call that fails replaces no part of `values`.
            std::uint64_t size = 0;
            check(tdms_get_string_size(handle(), first, values.size(), &size));
            read_strings(first, values);
        } else {
            check(detail::element<T>::read(handle(), first, values.size(), values.data()));
        }
    }

    template <std::ranges::contiguous_range Values>
    requires detail::element_type<std::ranges::range_value_t<Values>>
    void read(std::uint64_t first, Values&& values) const
    {
        using T = std::ranges::range_value_t<Values>;
        read<T>(first, std::span<T>(std::ranges::data(values), std::ranges::size(values)));
    }

    /// The same for `count` values in a new vector.
    template <detail::element_type T>
    std::vector<T> read(std::uint64_t first, std::uint64_t count) const
    {
        // Checked before the allocation, so that a wrong count is not reported as a lack of memory.
        const std::uint64_t stored = size();
        if (first > stored || count > stored - first) fail(TDMS_RANGE);
        std::vector<T> values(static_cast<std::size_t>(count));
        if constexpr (std::is_same_v<T, bool>) {
            read_bools(first, values);
        } else {
            read<T>(first, std::span(values));
        }
        return values;
    }

    /// Reads all values.
    template <detail::element_type T>
    std::vector<T> read() const
    {
        return read<T>(0, size());
    }

    /// Appends a copy of values, which stays in memory until file::save(). They can be any
    /// contiguous range, a list in braces, or a std::vector<bool>. The first call fixes the
    /// channel's type. Throws #TDMS_CHANNEL_DATATYPE if the channel has another one, #TDMS_ARGUMENT
    /// for a string with a NUL and for 4 GiB of strings, and #TDMS_FILE_HANDLE for a file that is
    /// open for reading only.
    template <detail::element_type T>
    void append(std::span<const std::type_identity_t<T>> values)
    {
        if constexpr (std::is_same_v<T, std::string>) {
            append_strings(values);
        } else {
            check(detail::element<T>::append(handle(), values.size(), values.data()));
        }
    }
    template <detail::element_type T>
    void append(std::initializer_list<T> values)
    {
        append<T>(std::span<const T>(values.begin(), values.size()));
    }
    template <std::ranges::contiguous_range Values>
    requires detail::element_type<std::ranges::range_value_t<Values>>
    void append(const Values& values)
    {
        using T = std::ranges::range_value_t<Values>;
        append<T>(std::span<const T>(std::ranges::data(values), std::ranges::size(values)));
    }
    template <std::same_as<bool> T>
    void append(const std::vector<T>& values)
    {
        const auto copy = std::make_unique<bool[]>(values.size());
        std::copy(values.begin(), values.end(), copy.get());
        append<bool>(std::span<const bool>(copy.get(), values.size()));
    }

  private:
    friend class group;
    using object::object;

    std::pair<std::uint64_t, std::uint64_t> count() const
    {
        std::pair<std::uint64_t, std::uint64_t> result;
        check(tdms_get_num_values(handle(), &result.first, &result.second));
        return result;
    }

    void read_bools(std::uint64_t first, std::vector<bool>& values) const
    {
        const auto copy = std::make_unique<bool[]>(values.size());
        read<bool>(first, std::span(copy.get(), values.size()));
        std::copy_n(copy.get(), values.size(), values.begin());
    }

    // Piece by piece, so that the memory needed besides the strings stays small.
    void read_strings(std::uint64_t first, std::span<std::string> values) const
    {
        constexpr std::size_t at_once = 1024;
        std::vector<char> buffer;
        std::vector<const char*> begins(std::min(at_once, values.size()) + 1);
        for (; !values.empty(); first += at_once) {
            const std::span<std::string> part = values.first(std::min(at_once, values.size()));
            std::uint64_t size = 0;
            check(tdms_get_string_size(handle(), first, part.size(), &size));
            buffer.resize(static_cast<std::size_t>(size));
            check(
                tdms_read_string(handle(), first, part.size(), buffer.data(), size, begins.data()));
            for (std::size_t i = 0; i != part.size(); ++i) {
                part[i].assign(begins[i], begins[i + 1] - 1);
            }
            values = values.subspan(part.size());
        }
    }

    void append_strings(std::span<const std::string> values)
    {
        void* const target = handle();
        std::vector<const char*> texts;
        texts.reserve(values.size());
        for (const std::string& value : values) {
            if (detail::has_nul(value)) fail(TDMS_ARGUMENT);
            texts.push_back(value.c_str());
        }
        check(tdms_append_string(target, texts.size(), texts.data()));
    }
};

/// A named group of channels.
class group : public object {
  public:
    /// A copy of the group's name.
    std::string name() const { return detail::name_of(handle(), tdms_get_group_name); }

    /// All channels, in the byte order of their paths.
    std::vector<channel> channels() const
    {
        std::vector<channel> all;
        for (void* const found : list(detail::channels)) all.push_back(at(found));
        return all;
    }

    /// Whether the group has a channel of that name.
    bool contains(std::string_view name) const { return find(detail::channels, name) != nullptr; }

    /// The channel of that name; throws #TDMS_CHANNEL_HANDLE if there is none.
    channel operator[](std::string_view name) const { return at(get(detail::channels, name)); }
    channel operator[](std::nullptr_t) const = delete;

    /// Adds a channel; throws #TDMS_CHANNEL_REPEATED if there is one of that name.
    channel add_channel(std::string_view name) { return at(create(detail::channels, name)); }

  private:
    friend class file;
    using object::object;

    channel at(void* found) const { return {file_, group_, found}; }
};

/// An open file. It closes with the last copy of it or object in it. Values that have not been
/// saved are then lost, and only close() reports that the system failed to write what was saved.
class file : public object {
  public:
    /// Opens a file: "r" reads it, "w" creates or empties it, "a" reads it and appends to it;
    /// see tdms_open().
    explicit file(const std::string& path, const char* mode = "r")
        : file(opened(path, [&](auto& f) { return tdms_open(path.c_str(), mode, &f.handle); }))
    {
    }

    /// Opens what is intact of a file that was truncated or is being recorded; see
    /// tdms_open_partial().
    static file partial(const std::string& path)
    {
        return file(opened(
            path, [&](auto& f) { return tdms_open_partial(path.c_str(), &f.handle, &f.rest); }));
    }

    /// The path that the file was opened by.
    const std::string& path() const { return file_->path; }

    /// The number of bytes after the intact segments, when partial() opened the file or refresh()
    /// was last called.
    std::uint64_t rest() const { return file_->rest; }

    /// All groups, in the byte order of their paths.
    std::vector<group> groups() const
    {
        std::vector<group> all;
        for (void* const found : list(detail::groups)) all.push_back(at(found));
        return all;
    }

    /// Whether the file has a group of that name.
    bool contains(std::string_view name) const { return find(detail::groups, name) != nullptr; }

    /// The group of that name; throws #TDMS_GROUP_HANDLE if there is none.
    group operator[](std::string_view name) const { return at(get(detail::groups, name)); }
    group operator[](std::nullptr_t) const = delete;

    /// Adds a group; throws #TDMS_GROUP_REPEATED if there is one of that name.
    group add_group(std::string_view name) { return at(create(detail::groups, name)); }

    /// Appends everything new to the file, as one segment; see tdms_save().
    void save() { check(tdms_save(handle())); }

    /// Makes what was saved survive a loss of power; see tdms_sync().
    void sync() { check(tdms_sync(handle())); }

    /// Takes in what another program has added to the file; see tdms_refresh(). All objects stay
    /// valid.
    void refresh() { check(tdms_refresh(handle(), &file_->rest)); }

    /// Whether the file is open: neither this nor a copy of it was closed.
    bool is_open() const { return file_->handle != nullptr; }

    /// Closes the file for all copies, without saving; does nothing if it is closed. Throws
    /// #TDMS_WRITE if something saved was not written: the file is closed all the same.
    void close()
    {
        void* closing = std::exchange(file_->handle, nullptr);
        if (closing == nullptr) return;
        const int status = tdms_close(&closing);
        if (status != 0) throw error(status, file_->path, errno);
    }

  private:
    explicit file(const std::shared_ptr<detail::open_file>& opened)
        : object(opened, nullptr, opened->handle)
    {
    }

    template <class Open>
    static std::shared_ptr<detail::open_file> opened(const std::string& path, Open open)
    {
        auto result = std::make_shared<detail::open_file>(path);
        const int status = detail::has_nul(path) ? TDMS_ARGUMENT : open(*result);
        if (status != 0) throw error(status, path, errno);
        return result;
    }

    group at(void* found) const { return {file_, found, found}; }
};

}  // namespace tdms

#endif
