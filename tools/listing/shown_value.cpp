#include "listing/shown_value.h"

#include <type_traits>
#include <variant>

#include "console/text.h"
#include "console/value_text.h"

namespace tool {

std::string shown_value(const tdms::property_value& value)
{
    const auto text = [](const auto& v) -> std::string {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
            return "(no value)";
        } else if constexpr (std::is_same_v<T, std::string>) {
            return in_quotes(v);
        } else {
            return text_of(v);
        }
    };
    return std::visit(text, value);
}

std::string shown_name(const std::string& name)
{
    return name.empty() ? in_quotes(name) : printable(name);
}

std::string span_text(tdms::time first, tdms::time last)
{
    return text_of(first) + " to " + text_of(last);
}

}  // namespace tool
