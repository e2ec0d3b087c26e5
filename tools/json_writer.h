#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "console.h"

namespace tool {

/// Writes JSON piece by piece, so that none of it is held in memory.
class json_writer {
  public:
    explicit json_writer(output& out) : out_(out) {}

    /// An array's or an object's bracket, where a value may be.
    void open(char bracket)
    {
        out_.put(bracket);
        ++depth_;
        empty_ = true;
    }
    void close(char bracket)
    {
        --depth_;
        if (!empty_) begin_line();
        out_.put(bracket);
        empty_ = false;
    }

    /// Goes before every value in an array.
    void next()
    {
        if (!empty_) out_.put(',');
        begin_line();
        empty_ = false;
    }

    /// Goes before every value in an object.
    void put_key(std::string_view name)
    {
        next();
        put(name);
        out_.put(": ");
    }

    /// A number, a boolean, a string or null.
    void put(const nlohmann::json& value)
    {
        try {
            out_.put(value.dump());
        } catch (const nlohmann::json::type_error&) {
            // Bytes that are not UTF-8 are not allowed in JSON; they are shown as on a terminal.
            put(printable(value.get_ref<const std::string&>()));
        }
    }
    template <class T>
    void put(std::string_view name, const T& value)
    {
        put_key(name);
        put(value);
    }

  private:
    void begin_line()
    {
        out_.put('\n');
        for (std::size_t i = 0; i != depth_; ++i) out_.put("  ");
    }

    output& out_;
    std::size_t depth_ = 0;
    bool empty_ = true;
};

}  // namespace tool
