#pragma once

#include <optional>
#include <string_view>
#include <tdms.hpp>

#include "conversion/csv_reader.h"

namespace tool {

/// A field as a value of type T, if it is one; `decimal` is a point or a comma.
template <class T>
std::optional<T> value_from(std::string_view text, char decimal);

/// What the values of a column are, found by looking at all of them.
class csv_column_profile {
  public:
    explicit csv_column_profile(bool may_have_decimal_commas) : comma_(may_have_decimal_commas) {}

    void take(const csv_field& field);

    /// The narrowest ::tdms_type that holds all values: bool, int64, uint64, double, timestamp,
    /// string. Only doubles and strings have a value for what is missing between others. Void
    /// without values.
    int type() const;

    char decimal() const { return point_ ? '.' : ','; }

    /// The number of values; what is missing after the last one does not count.
    std::uint64_t count() const { return count_; }

    /// Whether an integer is rounded, because others in the column need a double.
    bool is_rounded() const { return inexact_ && type() == TDMS_TYPE_DOUBLE; }

    /// Whether times have no offset from UTC.
    bool has_no_offset() const { return without_offset_ && type() == TDMS_TYPE_TIMESTAMP; }

  private:
    void take(std::string_view text);
    bool take_integer(std::string_view text);

    std::uint64_t count_ = 0;
    std::uint64_t missing_ = 0;  // since the last value
    bool gaps_ = false;
    // What all values are so far.
    bool bool_ = true;
    bool integer_ = true;
    bool point_ = true;
    bool comma_;
    bool time_ = true;
    // What some integers are.
    bool negative_ = false;
    bool beyond_int64_ = false;
    bool inexact_ = false;
    bool without_offset_ = false;
};

}  // namespace tool
