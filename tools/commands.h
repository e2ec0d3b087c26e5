#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "console.h"

namespace tool {

// Each command returns true if everything succeeded; failures have been reported. A failure that it
// throws is about its one file.

struct info_options {
    std::vector<std::string> files;
    bool json = false;
    bool names = false;
};
bool info(const info_options& wanted);

struct dump_options {
    std::string file;
    std::vector<std::string> channels;
    std::uint64_t from = 0;
    std::uint64_t count = ~std::uint64_t{0};
    bool crlf = false;
};
bool dump(const dump_options& wanted);

struct plot_options {
    std::string file;
    std::vector<std::string> channels;
    std::string target;  // empty for the terminal
};
bool plot(const plot_options& wanted);

bool check(const std::vector<std::string>& files);

struct salvage_options {
    std::string file;
    std::string target;
};
bool salvage(const salvage_options& wanted);

/// Calls `use` for every file, and reports the failures of each.
template <class Use>
bool for_each_file(const std::vector<std::string>& files, Use use)
{
    bool all_well = true;
    for (const std::string& name : files) {
        try {
            all_well = use(name) && all_well;
        } catch (const failure& e) {
            report(name, e.what());
            all_well = false;
        } catch (const std::bad_alloc&) {
            report(name, "out of memory");
            all_well = false;
        }
    }
    return all_well;
}

}  // namespace tool
