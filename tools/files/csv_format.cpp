#include "files/csv_format.h"

#include <algorithm>

namespace tool {

void put_field(output& out, std::string_view text, const csv_format& format)
{
    const auto is_special = [&format](char c) {
        return c == format.separator || c == '"' || c == '\r' || c == '\n';
    };
    if (!text.empty() && std::ranges::none_of(text, is_special)) return out.put(text);
    out.put('"');
    for (std::size_t quote = 0; (quote = text.find('"')) != std::string_view::npos;) {
        out.put(text.substr(0, quote + 1));
        out.put('"');
        text.remove_prefix(quote + 1);
    }
    out.put(text);
    out.put('"');
}

}  // namespace tool
