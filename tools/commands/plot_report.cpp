#include "commands/plot_report.h"

#include "console/report.h"
#include "console/text.h"
#include "files/measurement_file.h"

namespace tool {

void plot_report::left_out(const selected_channel& c)
{
    if (!can_be_drawn(c.type)) {
        if (c.named) report_error(c, type_name(c.type) + " values cannot be drawn");
    } else if (c.lost != 0) {
        report_error(c, lost_values(c));
    } else if (c.named && !wanted_.follow) {
        report_error(c, "it has no values to draw");
    }
}

void plot_report::unreadable(const selected_channel& c, const std::string& message)
{
    report_error(c, message);
}

// A channel without numbers is an error only if it was named itself.
void plot_report::missing(const curve& c)
{
    if (c.from.lost != 0) report_error(c.from, lost_values(c.from));
    if (c.trace.too_large() != 0) {
        report_error(c.from, too_large(c));
    } else if (!wanted_.follow && !c.has_numbers()) {
        if (c.from.named) succeeded_ = false;
        if (c.trace.samples() != 0) {
            note(c.from, "it has no numbers to draw");
        } else if (c.from.named && !c.unreadable) {
            note(c.from, "it has no values at these times");
        }
    }
}

void plot_report::nothing_drawn()
{
    if (messages_.empty()) throw failure("there is nothing to draw");
    succeeded_ = false;
}

// Without the count while following: it grows, and each new one would be another message.
std::string plot_report::too_large(const curve& c) const
{
    if (wanted_.follow) return "some numbers are left out: too large to draw";
    if (!c.has_numbers()) return "its numbers are too large to draw";
    return number_of(c.trace.too_large(), "number") + " left out: too large to draw";
}

void plot_report::report_error(const selected_channel& c, const std::string& message)
{
    succeeded_ = false;
    note(c, message);
}

void plot_report::note(const selected_channel& c, const std::string& message)
{
    const std::string line = in_quotes(c.name()) + ": " + message;
    if (messages_.insert(line).second) report(wanted_.file, line);
}

}  // namespace tool
