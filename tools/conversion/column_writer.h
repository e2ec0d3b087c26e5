#pragma once

#include <cstddef>
#include <memory>
#include <tdms.hpp>

#include "conversion/csv_reader.h"
#include "conversion/csv_values.h"

namespace tool {

/// Converts the fields of a column and appends them to a channel, many at a time.
class column_writer {
  public:
    virtual ~column_writer() = default;

    /// @return the bytes that the value takes, or 0 if the field does not have the column's type
    virtual std::size_t add(const csv_field& field) = 0;

    /// Appends the values that were added.
    virtual void flush() = 0;
};

/// The writer of a column to a channel; null if the column has no values.
std::unique_ptr<column_writer> writer_of(const csv_column_profile& profile,
                                         const tdms::channel& to);

}  // namespace tool
