#include "comparison/difference_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "console/text.h"
#include "files/measurement_file.h"

namespace tool {

std::string excerpts(const std::string& a, const std::string& b)
{
    constexpr std::size_t longest = 60;
    constexpr std::size_t before = 20;
    std::size_t begin = 0;
    if (std::max(width_of(printable(a)), width_of(printable(b))) > longest) {
        const auto end = a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size()));
        const auto first = std::mismatch(a.begin(), end, b.begin()).first;
        const auto at = static_cast<std::size_t>(first - a.begin());
        begin = at - std::min(at, before);
        // An excerpt does not begin within a character of UTF-8.
        while (begin != 0 && (static_cast<unsigned char>(a[begin]) & 0xC0) == 0x80) --begin;
    }
    const auto excerpt = [begin](const std::string& of) {
        return (begin == 0 ? "" : "…") + shortened(in_quotes(of.substr(begin)), longest);
    };
    return excerpt(a) + " and " + excerpt(b);
}

std::string text_of_any(long double value)
{
    const auto rounded = static_cast<double>(value);
    if (static_cast<long double>(rounded) == value || std::isnan(value)) return text_of(rounded);
    return value < 0 ? text_of(static_cast<std::int64_t>(value))
                     : text_of(static_cast<std::uint64_t>(value));
}

std::string with_type_name(const tdms::property_value& value)
{
    const auto text = [](const auto& v) -> std::string {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
            return "";
        } else if constexpr (std::is_same_v<T, std::string>) {
            return ' ' + shortened(in_quotes(v), 60);
        } else {
            return ' ' + text_of(v);
        }
    };
    return type_name(type_of(value)) + std::visit(text, value);
}

}  // namespace tool
