#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>
#include <set>

#include "commands/commands.h"
#include "console/output.h"
#include "console/text.h"
#include "files/follower.h"
#include "files/group_times.h"
#include "files/new_file.h"
#include "plotting/curves.h"
#include "plotting/gnuplot.h"
#include "plotting/picture.h"
#include "plotting/terminal_drawing.h"

namespace tool {
namespace {

constexpr terminal_size usual_terminal{80, 25};
constexpr unsigned least_columns = 512;  // for which a curve's samples are kept

std::atomic<bool> interrupted = false;

void interrupt(int)
{
    interrupted = true;
}

// Shows one drawing after the other; on a terminal each in place of the last.
class screen {
  public:
    explicit screen(output& out) : out_(out) {}

    static terminal_size size() { return size_of_terminal(STDOUT_FILENO, usual_terminal); }
    bool has_changed() const { return !(size().columns == columns_ && size().rows == rows_); }

    // Replaces what is shown. REQUIRES: it has no more lines than the screen.
    void show(std::string_view drawing)
    {
        if (!on_terminal_) {
            if (columns_ != 0) out_.put('\n');
            out_.put(drawing);
        } else {
            // What was there before moves up.
            if (has_changed()) out_.put(std::string(size().rows, '\n'));
            out_.put("\033[H");
            put_in_place(drawing);
        }
        columns_ = size().columns;
        rows_ = size().rows;
        out_.flush();
    }

    void close()
    {
        if (on_terminal_ && columns_ != 0) out_.put('\n');
        out_.flush();
    }

  private:
    void put_in_place(std::string_view drawing)
    {
        while (!drawing.empty()) {
            const std::size_t end = std::min(drawing.find('\n'), drawing.size());
            out_.put(drawing.substr(0, end));
            out_.put("\033[K");
            drawing.remove_prefix(std::min(end + 1, drawing.size()));
            if (!drawing.empty()) out_.put('\n');
        }
        out_.put("\033[J");
    }

    output& out_;
    bool on_terminal_ = isatty(STDOUT_FILENO) != 0;
    unsigned columns_ = 0;  // of the terminal, as it was
    unsigned rows_ = 0;
};

class plot_command {
  public:
    explicit plot_command(const plot_options& wanted) : wanted_(wanted), from_(wanted.file)
    {
        if (!wanted.since.empty()) limits_.since = time_from(wanted.since);
        if (!wanted.until.empty()) limits_.until = time_from(wanted.until);
    }

    bool run()
    {
        if (wanted_.follow) {
            follow();
        } else if (wanted_.target.empty()) {
            draw_in_terminal();
        } else {
            draw_picture();
        }
        return all_well_;
    }

  private:
    void draw_picture()
    {
        const picture_format format = picture_format_of(wanted_.target, wanted_.size);
        from_.reject_as_target(wanted_.target);
        const tdms::file file = open_reported();
        const curve_set curves = read_curves(file, format.width);
        const std::vector<panel> shown = panels(curves, curves_in_picture_panel);
        if (shown.empty()) return;
        const std::string script = picture_script(shown, title(), curves.time_name(), format);
        new_file picture(wanted_.target);
        run_gnuplot(script, [&picture](std::string_view bytes) { picture.write(bytes); });
        picture.commit();
    }

    void draw_in_terminal()
    {
        const tdms::file file = open_reported();
        const terminal_size size = size_of_terminal(STDOUT_FILENO, usual_terminal);
        const curve_set curves = read_curves(file, size.columns);
        const std::vector<panel> shown = panels(curves, curves_in_terminal_panel);
        const terminal_drawer drawer(shown, curves.time_name(), size.columns);
        output out;
        for (const panel& p : shown) {
            if (&p != &shown.front()) out.put('\n');
            // With a line each for the title and for what the shell writes next.
            out.put(shortened(title(), size.columns) + '\n' +
                    drawer.draw(p, size.rows - std::min(size.rows, 2U)));
            out.flush();
        }
    }

    curve_set read_curves(const tdms::file& file, unsigned columns)
    {
        curve_set curves(drawable(file), std::max(columns, least_columns), limits_);
        read(curves);
        return curves;
    }

    std::vector<selected_channel> drawable(const tdms::file& file)
    {
        return drawable_channels(file, wanted_.channels,
                                 [this](const selected_channel& c) { leave_out(c); });
    }

    void leave_out(const selected_channel& c)
    {
        if (!can_be_drawn(c.type)) {
            if (c.named) complain(c, type_name(c.type) + " values cannot be drawn");
        } else if (c.lost != 0) {
            complain(c, lost_values(c));
        } else if (c.named && !wanted_.follow) {
            complain(c, "it has no values to draw");
        }
    }

    void read(curve_set& curves)
    {
        curves.read([this](const selected_channel& c, const std::string& message) {
            complain(c, message);
        });
        for (const curve& c : curves.curves()) {
            if (c.from.lost != 0) complain(c.from, lost_values(c.from));
            report_missing(c);
        }
    }

    // That there are no numbers is an error only of a channel that was asked for itself.
    void report_missing(const curve& c)
    {
        if (c.trace.too_large() != 0) {
            complain(c.from, too_large(c));
        } else if (!wanted_.follow && !c.has_numbers()) {
            if (c.from.named) all_well_ = false;
            if (c.trace.samples() != 0) {
                note(c.from, "it has no numbers to draw");
            } else if (c.from.named && !c.unreadable) {
                note(c.from, "it has no values at these times");
            }
        }
    }

    // Without a number that grows with the file, which would be a complaint every time.
    std::string too_large(const curve& c) const
    {
        if (wanted_.follow) return "some numbers are left out: too large to draw";
        if (!c.has_numbers()) return "its numbers are too large to draw";
        return count_of(c.trace.too_large(), "number") + " left out: too large to draw";
    }

    std::vector<panel> panels(const curve_set& curves, std::size_t most)
    {
        std::vector<panel> found = panels_of(curves.curves(), most);
        if (found.empty()) end_without_drawing();
        return found;
    }

    // What was reported about channels says why.
    void end_without_drawing()
    {
        if (complaints_.empty()) throw failure("there is nothing to draw");
        all_well_ = false;
    }

    std::string title() const
    {
        if (wanted_.file == "-") return "standard input";
        return printable(wanted_.file.substr(wanted_.file.rfind('/') + 1));
    }

    // What is not intact is reported first: it may be why a channel is not found.
    tdms::file open_reported()
    {
        tdms::file file = open_intact(from_);
        if (!report_rest(wanted_.file, from_, file, wanted_.strict)) all_well_ = false;
        return file;
    }

    // Each complaint once, also about a file that is drawn again and again.
    void complain(const selected_channel& c, const std::string& message)
    {
        all_well_ = false;
        note(c, message);
    }

    void note(const selected_channel& c, const std::string& message)
    {
        const std::string complaint = in_quotes(c.name()) + ": " + message;
        if (complaints_.insert(complaint).second) report(wanted_.file, complaint);
    }

    void follow()
    {
        follower recorder(from_);
        interrupted = false;
        std::signal(SIGINT, interrupt);
        std::signal(SIGTERM, interrupt);
        tdms::file file = open_intact(from_);
        // After damage nothing can be followed.
        const bool is_sound = report_damage(wanted_.file, from_, file);
        if (!is_sound) all_well_ = false;
        output out;
        screen shown(out);
        try {
            std::optional<curve_set> curves;
            while (show_news(file, curves, shown) && is_sound && !interrupted) {
                recorder.refresh(file);
            }
        } catch (const failure&) {
            shown.close();
            throw;
        }
        shown.close();
    }

    // @return false if there is no hope of anything to show
    bool show_news(const tdms::file& file, std::optional<curve_set>& curves, screen& shown)
    {
        const auto begin = std::chrono::steady_clock::now();
        if (is_hopeless(file)) {
            drawable(file);
            end_without_drawing();
            return false;
        }
        if (take_in(file, curves) || shown.has_changed()) draw(shown, curves);
        wait(4 * (std::chrono::steady_clock::now() - begin));
        return true;
    }

    // Reads what is new. @return whether anything is
    bool take_in(const tdms::file& file, std::optional<curve_set>& curves)
    {
        if (all_channels(file).empty()) return false;
        std::vector<selected_channel> channels = drawable(file);
        if (channels.empty()) return false;
        const bool is_known = curves && curves->curves().size() == channels.size();
        if (!is_known) curves.emplace(channels, 2 * least_columns, limits_);
        if (!curves->count_values()) return false;
        read(*curves);
        return true;
    }

    // No recorder adds what can be drawn to channels of these types.
    bool is_hopeless(const tdms::file& file) const
    {
        const auto hopeless = [](const selected_channel& c) {
            return c.named && !can_be_drawn(c.type);
        };
        return !all_channels(file).empty() &&
               std::ranges::all_of(select(file, wanted_.channels), hopeless);
    }

    void draw(screen& on, const std::optional<curve_set>& curves) const
    {
        if (!curves) return;
        const std::vector<panel> all = panels_of(curves->curves(), curves_in_terminal_panel);
        if (all.empty()) return;
        const terminal_size size = screen::size();
        const unsigned rows = size.rows - std::min(size.rows, 1U);
        const auto fitting =
            std::clamp<std::size_t>(rows / terminal_drawer::least_rows, 1, all.size());
        std::string drawing = title();
        if (fitting != all.size()) {
            drawing.append(": ").append(std::to_string(fitting)).append(" of ");
            drawing.append(count_of(all.size(), "panel")).append(" fit; name fewer channels");
        }
        drawing = shortened(drawing, size.columns) + '\n';
        try {
            const terminal_drawer drawer(all, curves->time_name(), size.columns);
            for (std::size_t i = 0; i != fitting; ++i) {
                drawing += drawer.draw(all[i], rows / static_cast<unsigned>(fitting));
            }
        } catch (const failure&) {
            if (interrupted) return;  // as gnuplot was
            throw;
        }
        on.show(drawing);
    }

    // Until a recorder may have saved, twice a second at most; throws when nobody reads the output
    // any more.
    static void wait(std::chrono::steady_clock::duration at_least)
    {
        using namespace std::chrono_literals;
        const auto end = std::chrono::steady_clock::now() +
                         std::max<std::chrono::steady_clock::duration>(at_least, 500ms);
        while (!interrupted && std::chrono::steady_clock::now() < end) follower::wait(100ms);
    }

    const plot_options& wanted_;
    input from_;
    time_limits limits_;
    std::set<std::string> complaints_;
    bool all_well_ = true;
};

}  // namespace

bool plot(const plot_options& wanted)
{
    return plot_command(wanted).run();
}

}  // namespace tool
