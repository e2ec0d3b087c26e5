#pragma once

#include <cmath>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "console/output.h"
#include "console/value_text.h"

namespace tool {

/// Writes JSON piece by piece, so that none of it is held in memory.
class json_writer {
  public:
    explicit json_writer(output& out) : out_(out) {}

    /// The brackets of an array or an object.
    void open(char bracket);
    void close(char bracket);

    /// Must be called before every value of an array.
    void next();

    /// Must be called before every value of an object.
    void put_key(std::string_view name);

    /// A number or a boolean. Infinities and NaN, which JSON does not have, become null.
    template <class T>
    requires std::is_arithmetic_v<T>
    void put(T value)
    {
        if constexpr (std::is_floating_point_v<T>) {
            if (!std::isfinite(value)) return put_null();
        }
        out_.keep(append_value(out_.room(longest_value), value));
    }

    /// JSON allows only UTF-8; other strings are written as on a terminal.
    void put(std::string_view value);
    void put(const char* value) { put(std::string_view(value)); }
    void put_null() { out_.put("null"); }

    template <class T>
    void put(std::string_view name, const T& value)
    {
        put_key(name);
        put(value);
    }

  private:
    void begin_line();

    output& out_;
    std::size_t depth_ = 0;
    bool empty_ = true;
};

}  // namespace tool
