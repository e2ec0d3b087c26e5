#include "listing/statistics_table.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>

#include "console/short_number.h"
#include "console/text.h"
#include "listing/shown_value.h"

namespace tool {
namespace {

// A channel without numbers has a text instead of cells.
class statistics_table {
  public:
    statistics_table(output& out, const std::vector<selected_channel>& channels,
                     const std::vector<channel_statistics>& statistics)
        : out_(out)
    {
        rows_.push_back({"channel", {"minimum", "maximum", "mean", "std dev", "NaN", "lost"}, ""});
        for (std::size_t i = 0; i != channels.size(); ++i) {
            rows_.push_back(row_of(channels[i], statistics[i]));
        }
        measure();
        for (const row& each : rows_) put(each);
    }

  private:
    static constexpr std::size_t columns = 6;
    static constexpr std::size_t narrowest_name = 16;

    struct row {
        std::string name;
        std::array<std::string, columns> cells;
        std::string text;  // instead of the cells, if not empty
    };

    static row row_of(const selected_channel& c, const channel_statistics& s)
    {
        row result{shown_name(c.channel.name()), {}, text_instead(c, s)};
        if (!result.text.empty()) return result;
        result.cells = {extreme_text(s.minimum),  extreme_text(s.maximum), number_text(s.mean),
                        number_text(s.deviation), std::to_string(s.nan),   std::to_string(c.lost)};
        return result;
    }

    static std::string text_instead(const selected_channel& c, const channel_statistics& s)
    {
        if (!s.failure.empty()) return "cannot be read";
        std::string text;
        if (c.count == 0) {
            text = "no values";
        } else if (c.type == TDMS_TYPE_TIMESTAMP) {
            text = span_text(std::get<tdms::time>(s.minimum), std::get<tdms::time>(s.maximum));
            if (!s.ascending) text.append(", not ascending");
        } else if (c.type == TDMS_TYPE_STRING) {
            if (s.minimum != s.maximum) text.append(shown_value(s.minimum)).append(" to ");
            text.append(number_of(std::get<std::uint64_t>(s.maximum), "byte"));
        } else {
            return {};
        }
        return c.lost == 0 ? text : text + "; " + with_commas(c.lost) + " lost";
    }

    // Exact if that is short; always for integers.
    static std::string extreme_text(const tdms::property_value& value)
    {
        constexpr std::size_t longest = 14;
        const auto text = [](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            std::string exact = shown_value(v);
            if constexpr (std::is_floating_point_v<T>) {
                if (exact.size() > longest) return short_number(double{v}, 9);
            }
            return exact;
        };
        return std::holds_alternative<std::monostate>(value) ? "-" : std::visit(text, value);
    }

    static std::string number_text(std::optional<double> value)
    {
        return value ? short_number(*value) : "-";
    }

    void measure()
    {
        std::size_t others = 4;
        for (std::size_t i = 0; i != columns; ++i) {
            for (const row& each : rows_) widths_[i] = std::max(widths_[i], each.cells[i].size());
            others += 2 + widths_[i];
        }
        for (const row& each : rows_) others = std::max(others, 6 + each.text.size());
        const std::size_t left = size_of_terminal(STDOUT_FILENO, {100, 0}).columns;
        const std::size_t widest = std::max(narrowest_name, left - std::min(left, others));
        for (const row& each : rows_) name_ = std::max(name_, width_of(each.name));
        name_ = std::min(name_, widest);
    }

    void put(const row& each)
    {
        std::string line = "    " + padded(shortened(each.name, name_), name_);
        if (!each.text.empty()) {
            line.append("  ").append(each.text);
        } else {
            for (std::size_t i = 0; i != columns; ++i) {
                line.append(2 + widths_[i] - each.cells[i].size(), ' ').append(each.cells[i]);
            }
        }
        out_.put(line);
        out_.put('\n');
    }

    output& out_;
    std::vector<row> rows_;
    std::array<std::size_t, columns> widths_{};
    std::size_t name_ = 0;
};

}  // namespace

void put_statistics_table(output& out, const std::vector<selected_channel>& channels,
                          const std::vector<channel_statistics>& statistics)
{
    statistics_table(out, channels, statistics);
}

}  // namespace tool
