#include "files/csv_columns.h"

#include <algorithm>
#include <array>
#include <span>
#include <type_traits>
#include <utility>

#include "console/value_text.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

constexpr std::uint64_t most_rows = 4096;
constexpr std::uint64_t bytes_at_once = 8 << 20;

template <class T>
class typed_column : public csv_column {
  public:
    explicit typed_column(tdms::channel from) : from_(std::move(from)) {}

    std::uint64_t read(std::uint64_t first, std::uint64_t count) override
    {
        if (count > capacity_) {
            capacity_ = 0;
            values_ = std::make_unique<T[]>(count);
            capacity_ = count;
        }
        from_.read<T>(first, std::span(values_.get(), count));
        std::uint64_t bytes = count * sizeof(T);
        if constexpr (std::is_same_v<T, std::string>) {
            for (std::uint64_t i = 0; i != count; ++i) bytes += values_[i].size();
        }
        return bytes;
    }

    void put(output& out, std::uint64_t row, const csv_format& format) const override
    {
        const T& value = values_[row];
        if constexpr (std::is_same_v<T, std::string>) {
            put_field(out, value, format);
        } else {
            char* const begin = out.room(longest_value);
            char* const end = append_value(begin, value);
            if constexpr (std::is_floating_point_v<T>) {
                if (format.decimal_comma) std::replace(begin, end, '.', ',');
            }
            out.keep(end);
        }
    }

  private:
    tdms::channel from_;
    std::unique_ptr<T[]> values_;
    std::uint64_t capacity_ = 0;
};

}  // namespace

std::unique_ptr<csv_column> column_of(const selected_channel& c)
{
    std::unique_ptr<csv_column> column;
    const bool has_type = tdms::with_type(
        c.type, [&]<class T>() { column = std::make_unique<typed_column<T>>(c.channel); });
    // A channel without a type has no values.
    if (!has_type) column = std::make_unique<typed_column<double>>(c.channel);
    return column;
}

csv_table::csv_table(output& out, const csv_format& format, std::vector<csv_source> sources)
    : out_(out), format_(format), sources_(std::move(sources)), held_(sources_.size())
{
    for (const csv_source& s : sources_) columns_.push_back(column_of(s.from));
}

bool csv_table::has_values() const
{
    return std::ranges::any_of(sources_, [](const csv_source& s) { return s.from.count != 0; });
}

void csv_table::count_values()
{
    for (std::size_t i = 0; i != sources_.size(); ++i) {
        csv_source& s = sources_[i];
        const int type_before = s.from.type;
        s.from.count_values();
        s.end = s.from.count;
        if (s.from.type != type_before) columns_[i] = column_of(s.from);
    }
}

template <class Put>
void csv_table::put_line(Put put)
{
    if (sources_.empty()) return;
    for (std::size_t i = 0; i != sources_.size(); ++i) {
        if (i != 0) out_.put(format_.separator);
        put(i);
    }
    out_.put(format_.end_of_line);
}

void csv_table::put_names()
{
    put_line([this](std::size_t i) { put_field(out_, sources_[i].from.name(), format_); });
}

void csv_table::put_units()
{
    put_line([this](std::size_t i) {
        const std::string unit = string_property(sources_[i].from.channel, "unit");
        if (!unit.empty()) put_field(out_, unit, format_);
    });
}

std::uint64_t csv_table::put_rows(std::uint64_t most, const error_handler& on_error)
{
    most = std::min(most, rows_at_once_);
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i != sources_.size(); ++i) {
        csv_source& s = sources_[i];
        held_[i] = s.next < s.end && !s.unreadable ? std::min(most, s.end - s.next) : 0;
        try {
            if (held_[i] != 0) bytes += columns_[i]->read(s.next, held_[i]);
        } catch (const tdms::error& e) {
            on_error(s.from, message_of(e.status()));
            s.unreadable = true;
            held_[i] = 0;
        }
        rows = std::max(rows, held_[i]);
        s.next += held_[i];
    }
    for (std::uint64_t row = 0; row != rows; ++row) {
        put_line([&](std::size_t i) {
            if (row < held_[i]) columns_[i]->put(out_, row, format_);
        });
    }
    done_ += bytes;
    // As many rows as are likely to fit; the lengths of the next strings are not known.
    const std::uint64_t fitting = rows == 0 ? 1 : bytes_at_once * rows / std::max(bytes, rows);
    rows_at_once_ = std::clamp<std::uint64_t>(std::min(fitting, 8 * rows_at_once_), 1, most_rows);
    return rows;
}

std::uint64_t csv_table::total() const
{
    constexpr std::array<std::uint64_t, 17> sizes{0, 1, 2, 4, 8, 1, 2, 4, 8, 4, 8};
    std::uint64_t bytes = 0;
    for (const csv_source& s : sources_) {
        const auto type = static_cast<std::size_t>(s.from.type);
        bytes += (s.end - std::min(s.next, s.end)) * (type < 11 ? sizes[type] : 8);
    }
    return bytes;
}

}  // namespace tool
