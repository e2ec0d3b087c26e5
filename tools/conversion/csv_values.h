#pragma once

#include <optional>
#include <string_view>
#include <tdms.hpp>

#include "conversion/csv_reader.h"

namespace tool {

/// The value of type T that a field holds, if any.
/// @param decimal the decimal separator, a point or a comma
template <class T>
std::optional<T> value_from(std::string_view text, char decimal);

/// Finds the type of a column from all of its values.
class csv_column_profile {
  public:
    explicit csv_column_profile(bool may_have_decimal_commas) : comma_(may_have_decimal_commas) {}

    void take(const csv_field& field);

    /// The narrowest ::tdms_type that holds all values: bool, int64, uint64, double, timestamp or
    /// string, but only double or string if values are missing between others; void without values.
    int type() const;

    char decimal() const { return point_ ? '.' : ','; }

    /// The number of values, with those that are missing between others but not at the end.
    std::uint64_t count() const { return count_; }

    /// Whether an integer is rounded because other values of the column need a double.
    bool is_rounded() const { return inexact_ && type() == TDMS_TYPE_DOUBLE; }

    /// Whether times have no offset from UTC.
    bool has_no_offset() const { return without_offset_ && type() == TDMS_TYPE_TIMESTAMP; }

  private:
    void take(std::string_view text);
    bool take_integer(std::string_view text);

    std::uint64_t count_ = 0;
    std::uint64_t missing_ = 0;  // since the last value
    bool gaps_ = false;
    // Whether all values so far can be read as such.
    bool bool_ = true;
    bool integer_ = true;
    bool point_ = true;
    bool comma_;
    bool time_ = true;
    // Whether some of the integers are.
    bool negative_ = false;
    bool beyond_int64_ = false;
    bool inexact_ = false;
    bool without_offset_ = false;
};

}  // namespace tool
