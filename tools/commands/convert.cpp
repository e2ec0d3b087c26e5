#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "commands/commands.h"
#include "console/output.h"
#include "console/text.h"
#include "conversion/csv_import.h"
#include "conversion/hdf5_export.h"
#include "files/input.h"
#include "files/measurement_file.h"
#include "files/new_file.h"

namespace tool {
namespace {

std::string suffix_of(const std::string& name)
{
    std::string suffix = std::filesystem::path(name).extension();
    std::ranges::transform(suffix, suffix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return suffix;
}

bool is_measurement_file(const input& file)
{
    constexpr std::string_view tag = "TDSm";
    std::array<char, tag.size()> begin{};
    return pread(file.file(), begin.data(), begin.size(), 0) == std::ssize(begin) &&
           std::string_view(begin.data(), begin.size()) == tag;
}

bool to_csv(const convert_options& wanted)
{
    dump_options as_csv;
    as_csv.file = wanted.source;
    as_csv.target = wanted.target;
    as_csv.units = wanted.units;
    as_csv.strict = wanted.strict;
    return dump(as_csv);
}

bool to_hdf5(const convert_options& wanted)
{
    const input from(wanted.source);
    from.reject_as_target(wanted.target);
    const tdms::file file = open_intact(from);
    const bool complete = report_rest(wanted.source, from, file, wanted.strict);
    new_file target(wanted.target);
    const bool all_values = export_hdf5(wanted.source, file, target.path(), wanted.target);
    target.commit();
    return complete && all_values;
}

bool from_csv(const convert_options& wanted)
{
    const input from(wanted.source);
    from.reject_as_target(wanted.target);
    if (is_measurement_file(from)) {
        throw usage_error("the input is a TDMS file already; only CSV is converted to .tdms");
    }
    new_file target(wanted.target);
    const std::string summary =
        import_csv(from, wanted.source, wanted.units, target.path(), wanted.target);
    target.commit();
    output out;
    out.put(printable(wanted.target) + ": " + summary + '\n');
    out.flush();
    return true;
}

}  // namespace

bool convert(const convert_options& wanted)
{
    const std::string to = suffix_of(wanted.target);
    if (to == ".tdms") return from_csv(wanted);
    const bool is_hdf5 = to == ".h5" || to == ".hdf5";
    if (!is_hdf5 && to != ".csv") {
        throw usage_error("the output must end in .h5, .hdf5, .csv or .tdms: " +
                          in_quotes(wanted.target));
    }
    if (suffix_of(wanted.source) == ".csv") {
        throw usage_error("CSV is converted only to .tdms");
    }
    if (is_hdf5 && wanted.units) throw usage_error("--units needs CSV, which has a line for them");
    return is_hdf5 ? to_hdf5(wanted) : to_csv(wanted);
}

}  // namespace tool
