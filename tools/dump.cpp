#include <algorithm>

#include "commands.h"
#include "console.h"
#include "measurement_file.h"
#include "value_text.h"

namespace tool {
namespace {

// A field with a separator, a quote or an end of line in it is quoted, and so is an empty string,
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

constexpr std::uint64_t rows_at_once = 4096;

// Some rows of one channel's values, and how to put one of them.
struct column {
    const channel* source;
    std::uint64_t count;
    channel_values values{};
    std::uint64_t rows = 0;
    void (*put)(const channel_values& values, std::uint64_t row, output& out) = nullptr;
};

template <class T>
void put_value(const channel_values& values, std::uint64_t row, output& out)
{
    const auto& held = *std::get_if<T>(&values);
    if constexpr (std::is_same_v<T, string_values>) {
        put_field(out, held.at(row));
    } else {
        out.keep(append_value(out.room(longest_value), held.at(row)));
    }
}

void read_rows(column& c, std::uint64_t first, std::uint64_t most)
{
    c.rows = 0;
    if (first >= c.count) return;
    const std::uint64_t rows = std::min(most, c.count - first);
    c.values = read_values(*c.source, first, rows);
    c.rows = rows;
    c.put = std::visit([](const auto& held) { return &put_value<std::decay_t<decltype(held)>>; },
                       c.values);
}

}  // namespace

bool dump(const dump_options& wanted)
{
    const input from(wanted.file);
    const measurement_file file(from);
    const char* const end_of_line = wanted.crlf ? "\r\n" : "\n";
    bool all_read = true;
    const auto complain = [&](const channel& c, const std::string& message) {
        report(wanted.file, in_quotes(c.name) + ": " + message);
        all_read = false;
    };
    std::vector<column> columns;
    output out;
    for (const auto& [owner, chosen] : select(file, wanted.channels)) {
        if (!columns.empty()) out.put(',');
        put_field(out, chosen->name);
        columns.push_back({chosen, chosen->count});
        if (chosen->lost != 0) complain(*chosen, lost_values(*chosen));
    }
    if (!columns.empty()) out.put(end_of_line);
    std::uint64_t rows = 0;
    for (std::uint64_t done = 0; done != wanted.count; done += rows) {
        const std::uint64_t first = wanted.from + done;
        const std::uint64_t most = std::min(rows_at_once, wanted.count - done);
        rows = 0;
        for (column& c : columns) {
            // A channel that cannot be read keeps its column, so that the others keep theirs.
            try {
                read_rows(c, first, most);
            } catch (const failure& e) {
                complain(*c.source, e.what());
                c.count = 0;
            }
            rows = std::max(rows, c.rows);
        }
        if (rows == 0) break;
        for (std::uint64_t row = 0; row != rows; ++row) {
            bool first_column = true;
            for (const column& c : columns) {
                if (!first_column) out.put(',');
                first_column = false;
                if (row < c.rows) c.put(c.values, row, out);
            }
            out.put(end_of_line);
        }
    }
    out.flush();
    return all_read;
}

}  // namespace tool
