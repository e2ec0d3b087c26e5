#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <tdms.hpp>
#include <type_traits>
#include <utility>

#include "console/progress.h"

namespace tool {

/// Reads the values of a channel in pieces, so memory does not depend on their number.
template <class T>
class piece_reader {
  public:
    /// @param shown counts the bytes that the values take in the file
    piece_reader(tdms::channel from, progress& shown) : from_(std::move(from)), shown_(shown) {}

    /// How many values the next piece may have. For strings this depends on the latest ones.
    std::uint64_t fitting() const { return fitting_; }

    /// Reads a piece, which is valid until the next one is read. REQUIRES: at most fitting()
    /// values.
    std::span<const T> read(std::uint64_t first, std::uint64_t count)
    {
        if (count > capacity_) {
            capacity_ = 0;
            values_ = std::make_unique<T[]>(count);
            capacity_ = count;
        }
        const std::span<T> piece(values_.get(), count);
        from_.read<T>(first, piece);
        const std::uint64_t bytes = bytes_of(piece);
        shown_.add(bytes);
        if constexpr (std::is_same_v<T, std::string>) fit(count, bytes);
        return piece;
    }

  private:
    static constexpr std::uint64_t bytes_at_once = 8 << 20;
    static constexpr std::uint64_t most_strings = 4096;
    static constexpr std::uint64_t most_values = 1 << 16;

    static std::uint64_t bytes_of(std::span<const T> piece)
    {
        if constexpr (std::is_same_v<T, std::string>) {
            std::uint64_t bytes = 0;
            for (const std::string& each : piece) bytes += 4 + each.size();
            return bytes;
        } else if constexpr (std::is_same_v<T, tdms::time>) {
            return 16 * piece.size();
        } else {
            return piece.size_bytes();
        }
    }

    void fit(std::uint64_t count, std::uint64_t bytes)
    {
        const std::uint64_t wanted = std::min(bytes_at_once * count / bytes, 8 * fitting_);
        fitting_ = std::clamp<std::uint64_t>(wanted, 1, most_strings);
        if (bytes > bytes_at_once) capacity_ = 0;  // the next piece frees these strings
    }

    tdms::channel from_;
    progress& shown_;
    std::unique_ptr<T[]> values_;
    std::uint64_t capacity_ = 0;
    std::uint64_t fitting_ = std::is_same_v<T, std::string> ? 1 : most_values;
};

}  // namespace tool
