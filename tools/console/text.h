#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

/// Text from a file as it can be shown on one line of a terminal: control characters and bytes that
/// are not UTF-8 become escapes.
std::string printable(std::string_view text);
bool is_utf8(std::string_view text);
std::string in_quotes(std::string_view text);

/// A channel's or group's name as an argument: as it is, if that is printable and the command line
/// takes it for nothing else; with escapes where not.
std::string as_argument(std::string_view name);

/// A text as a shell takes it for one word: in quotes if it must be.
std::string for_shell(const std::string& text);

/// A number with commas between the thousands.
std::string with_commas(std::uint64_t number);

/// A number of things, in words: "1 group", "2 groups", "1,234 bytes".
std::string count_of(std::uint64_t count, std::string_view what);

/// How many characters a text takes on a terminal, the text with blanks up to a width, and the text
/// with an ellipsis where it would be wider.
std::size_t width_of(std::string_view text);
std::string padded(std::string text, std::size_t width);
std::string shortened(std::string_view text, std::size_t width);

}  // namespace tool
