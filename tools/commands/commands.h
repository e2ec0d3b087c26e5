#pragma once

#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <tdms.hpp>
#include <vector>

#include "console/report.h"
#include "files/measurement_file.h"

namespace tool {

// Each command returns true if everything succeeded; otherwise it has reported what failed. A
// command for one file may also throw a failure, which is about that file.

struct info_options {
    std::vector<std::string> files;
    bool json = false;
    bool names = false;
    bool statistics = false;
    bool strict = false;
};
bool info(const info_options& wanted);

struct dump_options {
    std::string file;
    std::vector<std::string> channels;
    std::string target;  // empty for standard output
    std::uint64_t from = 0;
    std::uint64_t count = ~std::uint64_t{0};
    std::string since;  // times; empty for none
    std::string until;
    bool time_first = false;
    bool units = false;
    std::optional<std::string> separator;  // default: comma, or semicolon with decimal commas
    bool decimal_comma = false;
    bool crlf = false;
    bool follow = false;
    bool strict = false;
};
bool dump(const dump_options& wanted);

struct plot_options {
    std::string file;
    std::vector<std::string> channels;
    std::string target;  // empty for the terminal
    std::string size;    // WIDTHxHEIGHT; empty for the usual one
    std::string since;   // times; empty for none
    std::string until;
    bool follow = false;
    bool strict = false;
};
bool plot(const plot_options& wanted);

struct convert_options {
    std::string source;
    std::string target;
    bool units = false;  // the second line of CSV has the units
    bool strict = false;
};
bool convert(const convert_options& wanted);

struct diff_options {
    std::string first;
    std::string second;
    double tolerance = 0;           // the difference that two numbers may have
    double relative_tolerance = 0;  // the same, as a share of the larger number
    bool quiet = false;
};
bool diff(const diff_options& wanted);

struct check_options {
    std::vector<std::string> files;
    bool quiet = false;
};
bool check(const check_options& wanted);

struct salvage_options {
    std::string file;
    std::string target;  // "-" for standard output
};
bool salvage(const salvage_options& wanted);

/// Calls `use(name)` for every file, and reports the failures. @return whether all calls returned
/// true
template <class Use>
bool for_each_file(const std::vector<std::string>& files, Use use)
{
    bool succeeded = true;
    const auto fail = [&](const std::string& name, const std::string& message) {
        report(name, message);
        succeeded = false;
    };
    for (const std::string& name : files) {
        try {
            succeeded = use(name) && succeeded;
        } catch (const failure& e) {
            fail(name, e.what());
        } catch (const tdms::error& e) {
            fail(name, message_of(e.status(), e.system_error()));
        } catch (const std::bad_alloc&) {
            fail(name, "out of memory");
        }
    }
    return succeeded;
}

}  // namespace tool
