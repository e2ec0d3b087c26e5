#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console/output.h"
#include "files/csv_format.h"
#include "files/selected_channel.h"

namespace tool {

/// The values of a channel as a column. It reads some rows at a time, so memory does not depend on
/// their number.
class csv_column {
  public:
    virtual ~csv_column() = default;

    /// Reads `count` values, from number `first` on. @return the bytes that they take
    virtual std::uint64_t read(std::uint64_t first, std::uint64_t count) = 0;

    /// Puts one of the values that were read, counted from 0.
    virtual void put(output& out, std::uint64_t row, const csv_format& format) const = 0;
};

/// The column of a channel of any type.
std::unique_ptr<csv_column> column_of(const selected_channel& c);

/// A channel, and which of its rows become rows of a table.
struct csv_source {
    selected_channel from;
    std::uint64_t next;  // the first row that has not been put
    std::uint64_t end;   // after the last row
    bool unreadable = false;
};

/// Channels side by side, as lines of CSV.
class csv_table {
  public:
    using error_handler = std::function<void(const selected_channel&, const std::string& message)>;

    csv_table(output& out, const csv_format& format, std::vector<csv_source> sources);

    const std::vector<csv_source>& sources() const { return sources_; }

    /// Whether any channel has values, in the chosen rows or outside them.
    bool has_values() const;

    /// Takes in the values that were added to the file.
    void count_values();

    void put_names();
    void put_units();

    /// Puts at most `most` rows, up to the end of the longest source. A channel that cannot be read
    /// is reported; its column stays, with empty fields.
    /// @return the number of rows; 0 at the end
    std::uint64_t put_rows(std::uint64_t most, const error_handler& on_error);

    /// The bytes of the values read so far, and of all values as far as they are known.
    std::uint64_t done() const { return done_; }
    std::uint64_t total() const;

  private:
    template <class Put>
    void put_line(Put put);

    output& out_;
    csv_format format_;
    std::vector<csv_source> sources_;
    std::vector<std::unique_ptr<csv_column>> columns_;
    std::vector<std::uint64_t> held_;  // rows of each column
    std::uint64_t rows_at_once_ = 1;
    std::uint64_t done_ = 0;
};

}  // namespace tool
