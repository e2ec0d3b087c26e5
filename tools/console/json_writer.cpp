#include "console/json_writer.h"

#include "console/text.h"

namespace tool {

void json_writer::open(char bracket)
{
    out_.put(bracket);
    ++depth_;
    empty_ = true;
}

void json_writer::close(char bracket)
{
    --depth_;
    if (!empty_) begin_line();
    out_.put(bracket);
    empty_ = false;
}

void json_writer::next()
{
    if (!empty_) out_.put(',');
    begin_line();
    empty_ = false;
}

void json_writer::put_key(std::string_view name)
{
    next();
    put(name);
    out_.put(": ");
}

void json_writer::put(std::string_view value)
{
    constexpr std::string_view digits = "0123456789abcdef";
    if (!is_utf8(value)) return put(printable(value));
    out_.put('"');
    for (const char c : value) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out_.put('\\');
            out_.put(c);
        } else if (code < 0x20) {
            out_.put("\\u00");
            out_.put(digits[code / 16]);
            out_.put(digits[code % 16]);
        } else {
            out_.put(c);
        }
    }
    out_.put('"');
}

void json_writer::begin_line()
{
    out_.put('\n');
    for (std::size_t i = 0; i != depth_; ++i) out_.put("  ");
}

}  // namespace tool
