#include <unistd.h>

#include <algorithm>

#include "commands/plot_follow.h"
#include "console/output.h"
#include "console/text.h"
#include "files/measurement_file.h"
#include "files/new_file.h"
#include "plotting/gnuplot.h"
#include "plotting/picture.h"
#include "plotting/picture_format.h"
#include "plotting/screen.h"
#include "plotting/terminal_drawing.h"

namespace tool {
namespace {

// Draws a file once.
class still_plot {
  public:
    still_plot(const plot_options& wanted, plot_source& source) : wanted_(wanted), source_(source)
    {
    }

    void draw_picture()
    {
        const picture_format format = picture_format_of(wanted_.target, wanted_.size);
        source_.from().reject_as_target(wanted_.target);
        const tdms::file file = open();
        const curve_set curves = read_curves(file, format.width);
        const std::vector<panel> shown = panels(curves, curves_in_picture_panel);
        if (shown.empty()) return;
        const std::string script =
            picture_script(shown, source_.title(), curves.time_name(), format);
        new_file picture(wanted_.target);
        run_gnuplot(script, [&picture](std::string_view bytes) { picture.write(bytes); });
        picture.commit();
    }

    void draw_in_terminal()
    {
        const tdms::file file = open();
        const terminal_size size = screen::size();
        const curve_set curves = read_curves(file, size.columns);
        const std::vector<panel> shown = panels(curves, curves_in_terminal_panel);
        const terminal_drawer drawer(shown, curves.time_name(), size.columns);
        output out;
        for (const panel& p : shown) {
            if (&p != &shown.front()) out.put('\n');
            // Leaves a line each for the title and for the shell's next prompt.
            out.put(shortened(source_.title(), size.columns) + '\n' +
                    drawer.draw(p, size.rows - std::min(size.rows, 2U)));
            out.flush();
        }
    }

  private:
    // What is not intact is reported first: it may be why a channel is not found.
    tdms::file open()
    {
        tdms::file file = open_intact(source_.from());
        if (!report_rest(wanted_.file, source_.from(), file, wanted_.strict)) {
            source_.reports().fail();
        }
        return file;
    }

    curve_set read_curves(const tdms::file& file, unsigned columns)
    {
        curve_set curves(source_.drawable(file), std::max(columns, least_columns),
                         source_.limits());
        source_.read(curves);
        return curves;
    }

    std::vector<panel> panels(const curve_set& curves, std::size_t most)
    {
        std::vector<panel> found = panels_of(curves.curves(), most);
        if (found.empty()) source_.reports().nothing_drawn();
        return found;
    }

    const plot_options& wanted_;
    plot_source& source_;
};

}  // namespace

bool plot(const plot_options& wanted)
{
    plot_source source(wanted);
    if (wanted.follow) {
        follow_plot(wanted, source);
    } else if (wanted.target.empty()) {
        still_plot(wanted, source).draw_in_terminal();
    } else {
        still_plot(wanted, source).draw_picture();
    }
    return source.reports().succeeded();
}

}  // namespace tool
