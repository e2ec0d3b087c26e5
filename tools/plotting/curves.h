#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "console/progress.h"
#include "files/selected_channel.h"
#include "plotting/envelope.h"
#include "plotting/steps.h"

namespace tool {

/// The x axis of a curve: the times of its group, seconds by a sampling rate, or sample numbers.
enum class x_kind { time, seconds, samples };

struct curve {
    selected_channel from;
    std::string label;
    std::string unit;
    x_kind kind = x_kind::samples;
    double rate = 1;  // samples per unit of x
    envelope trace;   // over nanoseconds since 1970, or sample numbers
    double longest_step = std::numeric_limits<double>::infinity();  // in nanoseconds
    std::uint64_t next = 0;  // the first row that has not been read
    bool unreadable = false;

    bool is_bool() const { return from.type == TDMS_TYPE_BOOL; }
    bool has_numbers() const;
};

/// Whether values of a type are numbers or bools; also true for a type that is not known yet.
bool can_be_drawn(int type);

/// The channels of a selection that have values to draw, each once.
/// @param other is called for the others
std::vector<selected_channel> drawable_channels(
    const tdms::file& file, const std::vector<std::string>& names,
    const std::function<void(const selected_channel&)>& other);

/// Samples from `since` on, and before `until`, are drawn.
struct time_limits {
    std::optional<tdms::time> since;
    std::optional<tdms::time> until;
};

/// Reads the curves of channels, piece by piece.
class curve_set {
  public:
    using error_handler = std::function<void(const selected_channel&, const std::string& message)>;

    /// Throws a failure if there are limits that cannot be found in the times of a group.
    /// @param columns the width of the widest picture
    curve_set(const std::vector<selected_channel>& channels, std::size_t columns,
              const time_limits& limits);

    /// Reads what has not been read yet. A channel that cannot be read is reported, and its curve
    /// ends there.
    void read(const error_handler& on_error);

    /// Takes in the values that were added to the file. @return whether there are any to read
    bool count_values();

    const std::vector<curve>& curves() const { return curves_; }

    /// The name of the timestamp channel, or "time" if there are several names.
    std::string time_name() const;

  private:
    static constexpr std::uint64_t rows_at_once = 1 << 16;

    // Curves of a group over the same times, or without times.
    struct family {
        std::string group;
        std::optional<selected_channel> times;
        std::vector<std::size_t> members;
        std::uint64_t first = 0;  // row
        std::uint64_t end = ~std::uint64_t{0};
        step_counter steps{};
    };

    // The rows from `first` to `end` - 1 of one family.
    struct piece {
        std::uint64_t first = 0;
        std::uint64_t end = 0;
        std::unique_ptr<tdms::time[]> times = std::make_unique<tdms::time[]>(rows_at_once);
        std::unique_ptr<double[]> values = std::make_unique<double[]>(rows_at_once);
    };

    void add(const selected_channel& c, std::size_t columns);
    family& family_of(const selected_channel& c);
    static void limit(family& f, const selected_channel& c, const time_limits& limits);
    void label_curves();
    static std::uint64_t end_of(const family& f, const curve& c);
    std::uint64_t bytes_to_read() const;

    bool find_rows(const family& f, piece& rows) const;
    void read(family& f, piece& rows, progress& shown, const error_handler& on_error);
    static void add_samples(curve& c, std::span<const double> values, const piece& rows);

    time_limits limits_;
    std::vector<curve> curves_;
    std::vector<family> families_;
};

}  // namespace tool
