#include "conversion/csv_values.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>

#include "console/report.h"
#include "console/time_parser.h"
#include "console/value_text.h"

namespace tool {
namespace {

std::string_view without_blanks(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

template <class T>
std::optional<T> parsed(std::string_view text)
{
    T value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return value;
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// A text that may be a number, without blanks and plus. A text with leading zeros may not: it is
// probably an identifier, which would lose them.
std::string_view number_in(std::string_view text)
{
    text = without_blanks(text);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    const bool begins_with_zeros = digits.size() > 1 && digits[0] == '0' && is_digit(digits[1]);
    return begins_with_zeros ? std::string_view() : text;
}

// Whether a double holds an integer of this magnitude exactly.
bool is_double(std::uint64_t magnitude)
{
    return magnitude == 0 || std::bit_width(magnitude) - std::countr_zero(magnitude) <= 53;
}

// Whether a text is an integer. REQUIRES: it is none of 64 bits.
bool is_large_integer(std::string_view text)
{
    if (text.starts_with('-')) text.remove_prefix(1);
    return text.size() > 18 && std::ranges::all_of(text, is_digit);
}

// Whether a text has a time of day after its date. A date alone is taken as a string.
bool has_clock(std::string_view text)
{
    return text.find_first_of("T ") != std::string_view::npos;
}

// Whether a time states its offset from UTC.
bool has_offset(std::string_view text)
{
    const std::size_t clock = text.find_first_of("T ");
    return clock != std::string_view::npos &&
           text.find_first_of("Z+-", clock) != std::string_view::npos;
}

}  // namespace

template <>
std::optional<bool> value_from(std::string_view text, char)
{
    text = without_blanks(text);
    if (text != "true" && text != "false") return std::nullopt;
    return text == "true";
}

template <>
std::optional<std::int64_t> value_from(std::string_view text, char)
{
    text = number_in(text);
    const std::optional<std::int64_t> value = parsed<std::int64_t>(text);
    // Integers have no negative zero.
    return value == 0 && text[0] == '-' ? std::nullopt : value;
}

template <>
std::optional<std::uint64_t> value_from(std::string_view text, char)
{
    return parsed<std::uint64_t>(number_in(text));
}

template <>
std::optional<double> value_from(std::string_view text, char decimal)
{
    text = number_in(text);
    if (decimal == '.') return parsed<double>(text);
    if (text.find('.') != std::string_view::npos) return std::nullopt;
    std::string with_point(text);
    std::ranges::replace(with_point, decimal, '.');
    return parsed<double>(with_point);
}

template <>
std::optional<tdms::time> value_from(std::string_view text, char)
{
    text = without_blanks(text);
    if (text.empty() || !is_digit(text[0]) || !has_clock(text)) return std::nullopt;
    try {
        return time_from(std::string(text));
    } catch (const usage_error&) {
        return std::nullopt;
    }
}

template <>
std::optional<std::string> value_from(std::string_view text, char)
{
    return std::string(text);
}

void csv_column_profile::take(const csv_field& field)
{
    if (field.is_missing()) {
        ++missing_;
        return;
    }
    gaps_ = gaps_ || missing_ != 0;
    count_ += missing_ + 1;
    missing_ = 0;
    take(field.text);
}

void csv_column_profile::take(std::string_view text)
{
    bool_ = bool_ && value_from<bool>(text, '.');
    time_ = time_ && value_from<tdms::time>(text, '.');
    without_offset_ = without_offset_ || (time_ && !has_offset(text));
    if ((!point_ && !comma_) || take_integer(text)) return;
    integer_ = false;
    inexact_ = inexact_ || is_large_integer(number_in(text));
    point_ = point_ && value_from<double>(text, '.');
    comma_ = comma_ && value_from<double>(text, ',');
}

bool csv_column_profile::take_integer(std::string_view text)
{
    if (const auto value = value_from<std::int64_t>(text, '.')) {
        const auto bits = static_cast<std::uint64_t>(*value);
        const std::uint64_t magnitude = *value < 0 ? 0 - bits : bits;
        negative_ = negative_ || *value < 0;
        inexact_ = inexact_ || !is_double(magnitude);
        return true;
    }
    if (const auto value = value_from<std::uint64_t>(text, '.')) {
        beyond_int64_ = true;
        inexact_ = inexact_ || !is_double(*value);
        return true;
    }
    return false;
}

int csv_column_profile::type() const
{
    if (count_ == 0) return TDMS_TYPE_VOID;
    if (bool_ && !gaps_) return TDMS_TYPE_BOOL;
    if (time_ && !gaps_) return TDMS_TYPE_TIMESTAMP;
    if (!point_ && !comma_) return TDMS_TYPE_STRING;
    const bool fits = !beyond_int64_ || !negative_;
    if (!integer_ || gaps_ || !fits) return TDMS_TYPE_DOUBLE;
    return beyond_int64_ ? TDMS_TYPE_UINT64 : TDMS_TYPE_INT64;
}

}  // namespace tool
