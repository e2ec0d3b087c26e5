#include <algorithm>

#include "commands.h"
#include "console.h"
#include "measurement_file.h"
#include "value_text.h"

namespace tool {
namespace {

// A field with a separator, a quote or an end of line in it is quoted, and so is an empty text,
// which would look like the missing value of a shorter channel.
void put_field(output& out, std::string_view text)
{
    if (!text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos) {
        out.put(text);
        return;
    }
    out.put('"');
    for (std::size_t quote = 0; (quote = text.find('"')) != std::string_view::npos;) {
        out.put(text.substr(0, quote + 1));
        out.put('"');
        text.remove_prefix(quote + 1);
    }
    out.put(text);
    out.put('"');
}

// One channel's values, and how to put one of them.
struct column {
    channel_values values;
    std::uint64_t count;
    void (*put)(const channel_values& values, std::uint64_t row, output& out);
};

template <class T>
void put_value(const channel_values& values, std::uint64_t row, output& out)
{
    const auto& held = *std::get_if<T>(&values);
    if constexpr (std::is_same_v<T, text_values>) {
        put_field(out, held.at(row));
    } else {
        out.keep(append_value(out.room(longest_value), held.items[row]));
    }
}

column column_of(channel_values&& values, std::uint64_t count)
{
    const auto put = std::visit(
        [](const auto& held) { return &put_value<std::decay_t<decltype(held)>>; }, values);
    return {std::move(values), count, put};
}

}  // namespace

bool dump(const dump_options& wanted)
{
    const input from(wanted.file);
    const measurement_file file(from);
    const char* const end_of_line = wanted.crlf ? "\r\n" : "\n";
    bool all_read = true;
    std::vector<column> columns;
    std::uint64_t rows = 0;
    output out;
    for (const auto& [owner, chosen] : select(file, wanted.channels)) {
        if (!columns.empty()) out.put(',');
        put_field(out, chosen->name);
        columns.push_back({{}, 0, nullptr});
        if (chosen->count == 0) continue;
        // A channel that cannot be read keeps its column, so that the others stay in their places.
        try {
            columns.back() = column_of(file.read(*chosen), chosen->count);
            rows = std::max(rows, chosen->count);
        } catch (const failure& e) {
            report(wanted.file, in_quotes(chosen->name) + ": " + e.what());
            all_read = false;
        }
    }
    if (!columns.empty()) out.put(end_of_line);
    const std::uint64_t begin = std::min(wanted.from, rows);
    const std::uint64_t end = begin + std::min(wanted.count, rows - begin);
    for (std::uint64_t row = begin; row != end; ++row) {
        bool first = true;
        for (const column& c : columns) {
            if (!first) out.put(',');
            first = false;
            if (row < c.count) c.put(c.values, row, out);
        }
        out.put(end_of_line);
    }
    out.flush();
    return all_read;
}

}  // namespace tool
