#include "plotting/picture_format.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>
#include <system_error>

#include "console/report.h"
#include "console/text.h"

namespace tool {
namespace {

bool ends_with_suffix(const std::string& name, std::string_view suffix)
{
    return name.size() > suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(), [](char lower, char c) {
               return std::tolower(static_cast<unsigned char>(c)) == lower;
           });
}

unsigned pixels(std::string_view text, const std::string& size)
{
    constexpr unsigned least = 200;
    constexpr unsigned most = 10000;
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) {
        throw usage_error("not a size: " + in_quotes(size) +
                          "; a size is such as 1200x800, from 200x200 to 10000x10000");
    }
    return number;
}

}  // namespace

picture_format picture_format_of(const std::string& target, const std::string& size)
{
    picture_format format{ends_with_suffix(target, ".svg"), 900, {}};
    if (!format.is_svg && !ends_with_suffix(target, ".png")) {
        throw usage_error("the picture's name must end in .svg or .png: " + in_quotes(target));
    }
    if (size.empty()) return format;
    const std::string_view both = size;
    const std::size_t x = std::min(both.find('x'), both.size());
    format.width = pixels(both.substr(0, x), size);
    format.height = pixels(both.substr(std::min(x + 1, both.size())), size);
    return format;
}

}  // namespace tool
