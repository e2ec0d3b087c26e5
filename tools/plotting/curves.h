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
#include "files/measurement_file.h"
#include "plotting/envelope.h"
#include "plotting/steps.h"

namespace tool {

/// What a curve's samples are counted in: the times of its group, seconds by a sampling rate, or
/// their own numbers.
enum class x_kind { time, seconds, samples };

struct curve {
    selected_channel from;
    std::string label;
    std::string unit;
    x_kind kind = x_kind::samples;
    double rate = 1;  // samples per unit of x
    envelope trace;   // over nanoseconds since 1970, or samples
    double longest_step = std::numeric_limits<double>::infinity();  // in nanoseconds
    std::uint64_t next = 0;
    bool unreadable = false;

    bool is_bool() const { return from.type == TDMS_TYPE_BOOL; }
    bool has_numbers() const;
};

/// Whether values of a type are numbers or bools; also of a type that is not known yet.
bool can_be_drawn(int type);

/// The channels of a selection that have values that can be drawn, each once. `other` gets the
/// others.
std::vector<selected_channel> drawable_channels(
    const tdms::file& file, const std::vector<std::string>& names,
    const std::function<void(const selected_channel&)>& other);

/// A time from which, and one before which samples are drawn.
struct time_limits {
    std::optional<tdms::time> since;
    std::optional<tdms::time> until;
};

/// The curves of channels, which are read piece by piece.
class curve_set {
  public:
    using complaint = std::function<void(const selected_channel&, const std::string& message)>;

    /// Throws a failure if limits cannot be found in a group's times.
    /// @param columns of the widest picture
    curve_set(const std::vector<selected_channel>& channels, std::size_t columns,
              const time_limits& limits);

    /// Reads what has not been read, as far as it goes. A channel that cannot be read is reported,
    /// and its curve ends there.
    void read(const complaint& complain);

    /// Takes in the values that the file has now. @return whether there are more
    bool count_values();

    const std::vector<curve>& curves() const { return curves_; }

    /// The name that the times of all curves have, or "time".
    std::string time_name() const;

  private:
    static constexpr std::uint64_t rows_at_once = 1 << 16;

    // Curves over the same times, or over none.
    struct family {
        std::string group;
        std::optional<selected_channel> times;
        std::vector<std::size_t> members;
        std::uint64_t first = 0;  // row
        std::uint64_t end = ~std::uint64_t{0};
        step_counter steps{};
    };

    // Some rows of one family, first to end - 1.
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
    void read(family& f, piece& rows, progress& shown, const complaint& complain);
    static void add_samples(curve& c, std::span<const double> values, const piece& rows);

    time_limits limits_;
    std::vector<curve> curves_;
    std::vector<family> families_;
};

}  // namespace tool
