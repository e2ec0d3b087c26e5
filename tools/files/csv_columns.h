#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console/output.h"
#include "files/csv_format.h"
#include "files/measurement_file.h"

namespace tool {

/// A channel's values as a column: some rows at a time, in memory that does not depend on how many
/// there are.
class csv_column {
  public:
    virtual ~csv_column() = default;

    /// Reads values first to first + count - 1. @return how many bytes they take
    virtual std::uint64_t read(std::uint64_t first, std::uint64_t count) = 0;

    /// Puts one of those that were read, counted from 0.
    virtual void put(output& out, std::uint64_t row, const csv_format& format) const = 0;
};

/// The column of a channel of any type.
std::unique_ptr<csv_column> column_of(const selected_channel& c);

/// Which rows of a channel become rows of a table.
struct csv_source {
    selected_channel from;
    std::uint64_t next;  // the first one that has not been put
    std::uint64_t end;   // after the last one
    bool unreadable = false;
};

/// Channels side by side, as lines.
class csv_table {
  public:
    using complaint = std::function<void(const selected_channel&, const std::string& message)>;

    csv_table(output& out, const csv_format& format, std::vector<csv_source> sources);

    const std::vector<csv_source>& sources() const { return sources_; }

    /// Whether there are any values, in whatever rows.
    bool has_values() const;

    /// Takes in the values that the file has now.
    void count_values();

    void put_names();
    void put_units();

    /// Puts at most `most` rows, up to the longest source's end. A channel that cannot be read is
    /// reported, and keeps its column, so that the others keep theirs.
    /// @return how many rows
    std::uint64_t put_rows(std::uint64_t most, const complaint& complain);

    /// The bytes that the values read so far take, and that all take as far as that is known.
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
