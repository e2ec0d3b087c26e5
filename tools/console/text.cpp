#include "console/text.h"

#include <algorithm>
#include <array>

namespace tool {
namespace {

bool is_continuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The length of the first character of a text in UTF-8, and its code; 0 if the bytes are no
// character.
std::size_t decode(std::string_view text, std::uint32_t& code)
{
    constexpr std::array<std::uint32_t, 5> first_of_length{0, 0, 0x80, 0x800, 0x10000};
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if ((byte(0) >= 0x80 && byte(0) < 0xC0) || byte(0) > 0xF4) return 0;
    const std::size_t length = byte(0) < 0x80 ? 1 : byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
    if (length > text.size()) return 0;
    code = length == 1 ? byte(0) : byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i != length; ++i) {
        if (!is_continuation(text[i])) return 0;
        code = code << 6 | (byte(i) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= first_of_length[length] && code <= 0x10FFFF && !surrogate ? length : 0;
}

bool is_control(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

std::string escape_of(char c)
{
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') return "\\n";
    return {'\\', 'x', digits[byte / 16], digits[byte % 16]};
}

}  // namespace

std::string printable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        std::uint32_t code = 0;
        const std::size_t length = decode(text, code);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length != 0 && !is_control(code)) {
            out += character;
        } else {
            for (const char c : character) out += escape_of(c);
        }
        text.remove_prefix(character.size());
    }
    return out;
}

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        std::uint32_t code = 0;
        const std::size_t length = decode(text, code);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string in_quotes(std::string_view text)
{
    std::string marked;
    for (const char c : text) {
        if (c == '"' || c == '\\') marked += '\\';
        marked += c;
    }
    return '"' + printable(marked) + '"';
}

std::string as_argument(std::string_view name)
{
    // The command line would take it for an option, a list of arguments or the end of a command.
    const bool special = name.starts_with('-') || name.starts_with('[') || name == "++";
    return special ? escape_of(name[0]) + printable(name.substr(1)) : printable(name);
}

std::string for_shell(const std::string& text)
{
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+./:,@%";
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) return text;
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') quoted += "'\\'";
        quoted += c;
    }
    return quoted + '\'';
}

std::string with_commas(std::uint64_t number)
{
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
    return digits;
}

std::string number_of(std::uint64_t count, std::string_view what)
{
    return with_commas(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

std::size_t width_of(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, is_continuation));
}

std::string padded(std::string text, std::size_t width)
{
    const std::size_t taken = width_of(text);
    if (taken < width) text.append(width - taken, ' ');
    return text;
}

std::string shortened(std::string_view text, std::size_t width)
{
    if (width_of(text) <= width) return std::string(text);
    std::size_t end = 0;
    for (std::size_t left = width; left != 0; --left) {
        while (++end != text.size() && is_continuation(text[end])) {
        }
    }
    // The ellipsis replaces the last character.
    while (end != 0 && is_continuation(text[--end])) {
    }
    return std::string(text.substr(0, end)) + "…";
}

}  // namespace tool
