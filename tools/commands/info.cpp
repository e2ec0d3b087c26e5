#include <unistd.h>

#include <optional>

#include "commands/commands.h"
#include "console/output.h"
#include "console/text.h"
#include "files/input.h"
#include "files/measurement_file.h"
#include "files/selected_channel.h"
#include "files/statistics.h"
#include "listing/tree_json.h"
#include "listing/tree_text.h"

namespace tool {
namespace {

// On a terminal, from which names are copied, they are quoted for the shell.
void put_names(output& out, const tdms::file& file)
{
    const bool for_terminal = isatty(STDOUT_FILENO) != 0;
    for (const selected_channel& c : all_channels(file)) {
        const std::string name = as_argument(c.name());
        out.put(for_terminal ? for_shell(name) : name);
        out.put('\n');
    }
}

// Reports the channels whose values cannot be read. @return whether there are none
bool report_failures(const std::string& name, const tdms::file& file, const file_statistics& all)
{
    bool succeeded = true;
    std::size_t group = 0;
    for (const tdms::group& g : file.groups()) {
        std::size_t channel = 0;
        for (const selected_channel& c : channels_of(g)) {
            const std::string& failure = all.groups[group].channels[channel++].failure;
            if (failure.empty()) continue;
            report(name, in_quotes(c.name()) + ": " + failure);
            succeeded = false;
        }
        ++group;
    }
    return succeeded;
}

}  // namespace

bool info(const info_options& wanted)
{
    output out;
    json_writer json(out);
    if (wanted.json) json.open('[');
    bool first = true;
    const bool succeeded = for_each_file(wanted.files, [&](const std::string& name) {
        const input from(name);
        const tdms::file file = open_intact(from);
        std::optional<file_statistics> read;
        if (wanted.statistics) read = statistics_of(from, file);
        const file_statistics* const statistics = read ? &*read : nullptr;
        if (wanted.json) {
            put_json(json, name, file, statistics);
        } else if (wanted.names) {
            put_names(out, file);
        } else {
            if (!first) out.put('\n');
            first = false;
            put_tree(out, name, file, statistics);
            out.flush();
        }
        const bool all_read = !read || report_failures(name, file, *read);
        return report_rest(name, from, file, wanted.strict) && all_read;
    });
    if (wanted.json) {
        json.close(']');
        out.put('\n');
    }
    out.flush();
    return succeeded;
}

}  // namespace tool
