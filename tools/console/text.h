#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

/// A string of a file as a terminal can show it on one line: control characters and bytes that are
/// not UTF-8 become escapes.
std::string printable(std::string_view text);
bool is_utf8(std::string_view text);
std::string in_quotes(std::string_view text);

/// The name of a channel or a group as an argument: with escapes where it is not printable, or
/// where the command line would take it for something else.
std::string as_argument(std::string_view name);

/// A text as one word for a shell: in quotes if it needs them.
std::string for_shell(const std::string& text);

/// A number with commas between groups of three digits.
std::string with_commas(std::uint64_t number);

/// A number of things: "1 group", "2 groups", "1,234 bytes".
std::string number_of(std::uint64_t count, std::string_view what);

/// How many characters a text has on a terminal.
std::size_t width_of(std::string_view text);

/// The text with blanks after it, up to a width.
std::string padded(std::string text, std::size_t width);

/// The text, ending with an ellipsis where it would be wider.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace tool
