#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <tdms.hpp>

#include "comparison/compared_file.h"
#include "comparison/tolerance.h"
#include "console/progress.h"
#include "files/selected_channel.h"

namespace tool {

/// Where the values of two channels differ.
struct value_differences {
    std::uint64_t count = 0;
    std::uint64_t first = 0;
    std::string values;   // the first two that differ
    std::string largest;  // of the finite differences between numbers; empty if there is none
};

/// Compares the values of two channels, as many as both have, piece by piece: those of one type,
/// and numbers of two types. Others are not compared.
class value_comparison {
  public:
    /// A channel of one of the files.
    struct side {
        const compared_file& in;
        const selected_channel& channel;
    };

    /// @param only_whether stop at the first piece that differs
    value_comparison(const side& a, const side& b, const tolerance& accepted, bool only_whether,
                     progress& shown)
        : a_(a), b_(b), tolerance_(accepted), only_whether_(only_whether), shown_(shown)
    {
    }

    /// Throws a read_failure.
    void run();

    /// What was found, also by a run that failed.
    value_differences differences() const;

  private:
    using number_reader = std::function<void(std::uint64_t first, std::span<long double> to)>;

    std::uint64_t total() const { return std::min(a_.channel.count, b_.channel.count); }
    template <class T>
    void compare_as();
    void compare_numbers();
    template <class T>
    void compare_piece(std::uint64_t first, std::span<const T> a, std::span<const T> b);
    template <class T>
    void add(std::uint64_t at, const T& a, const T& b);
    number_reader numbers_of(const side& from);
    template <class T>
    number_reader numbers_as(const side& from);
    bool is_decided() const { return only_whether_ && found_.count != 0; }

    side a_;
    side b_;
    const tolerance& tolerance_;
    bool only_whether_;
    progress& shown_;
    value_differences found_;
    long double largest_ = 0;
};

/// Whether values of a type are numbers, of which two types can be compared.
bool is_number_type(int type);

}  // namespace tool
