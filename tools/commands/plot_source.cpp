#include "commands/plot_source.h"

#include "console/text.h"
#include "console/time_parser.h"

namespace tool {

plot_source::plot_source(const plot_options& wanted)
    : wanted_(wanted), from_(wanted.file), reports_(wanted)
{
    if (!wanted.since.empty()) limits_.since = time_from(wanted.since);
    if (!wanted.until.empty()) limits_.until = time_from(wanted.until);
}

std::string plot_source::title() const
{
    if (wanted_.file == "-") return "standard input";
    return printable(wanted_.file.substr(wanted_.file.rfind('/') + 1));
}

std::vector<selected_channel> plot_source::drawable(const tdms::file& file)
{
    return drawable_channels(file, wanted_.channels,
                             [this](const selected_channel& c) { reports_.left_out(c); });
}

void plot_source::read(curve_set& curves)
{
    curves.read([this](const selected_channel& c, const std::string& message) {
        reports_.unreadable(c, message);
    });
    for (const curve& c : curves.curves()) reports_.missing(c);
}

}  // namespace tool
