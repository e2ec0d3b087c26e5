#include "commands/plot_follow.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>

#include "console/text.h"
#include "files/channel_selection.h"
#include "files/follower.h"
#include "files/measurement_file.h"
#include "plotting/screen.h"
#include "plotting/terminal_drawing.h"

namespace tool {
namespace {

std::atomic<bool> interrupted = false;

void interrupt(int)
{
    interrupted = true;
}

// A file that grows, drawn in the terminal until the user interrupts it.
class live_plot {
  public:
    live_plot(const plot_options& wanted, plot_source& source)
        : wanted_(wanted), source_(source), recorder_(source.from())
    {
    }

    void run()
    {
        interrupted = false;
        std::signal(SIGINT, interrupt);
        std::signal(SIGTERM, interrupt);
        tdms::file file = open_intact(source_.from());
        // After damage nothing can be followed.
        const bool is_sound = report_damage(wanted_.file, source_.from(), file);
        if (!is_sound) source_.reports().fail();
        try {
            while (show_news(file) && is_sound && !interrupted) recorder_.refresh(file);
        } catch (const failure&) {
            screen_.close();
            throw;
        }
        screen_.close();
    }

  private:
    // @return false if there will never be anything to show
    bool show_news(const tdms::file& file)
    {
        const auto begin = std::chrono::steady_clock::now();
        if (is_hopeless(file)) {
            source_.drawable(file);
            source_.reports().nothing_drawn();
            return false;
        }
        if (take_in(file) || screen_.has_changed()) draw();
        wait(4 * (std::chrono::steady_clock::now() - begin));
        return true;
    }

    // Reads what is new. @return whether anything is
    bool take_in(const tdms::file& file)
    {
        if (all_channels(file).empty()) return false;
        const std::vector<selected_channel> channels = source_.drawable(file);
        if (channels.empty()) return false;
        const bool is_known = curves_ && curves_->curves().size() == channels.size();
        if (!is_known) curves_.emplace(channels, 2 * least_columns, source_.limits());
        if (!curves_->count_values()) return false;
        source_.read(*curves_);
        return true;
    }

    // Whether all channels are named and have types that cannot be drawn, whatever a recorder adds.
    bool is_hopeless(const tdms::file& file) const
    {
        const auto hopeless = [](const selected_channel& c) {
            return c.named && !can_be_drawn(c.type);
        };
        return !all_channels(file).empty() &&
               std::ranges::all_of(select(file, wanted_.channels), hopeless);
    }

    void draw()
    {
        if (!curves_) return;
        const std::vector<panel> panels = panels_of(curves_->curves(), curves_in_terminal_panel);
        if (panels.empty()) return;
        try {
            screen_.show(drawing_of(panels));
        } catch (const failure&) {
            if (!interrupted) throw;  // gnuplot was interrupted, too
        }
    }

    // As many panels as fit on the screen, after a line with the title.
    std::string drawing_of(const std::vector<panel>& panels) const
    {
        const terminal_size size = screen::size();
        const unsigned rows = size.rows - std::min(size.rows, 1U);
        const auto fitting =
            std::clamp<std::size_t>(rows / terminal_drawer::least_rows, 1, panels.size());
        std::string drawing = source_.title();
        if (fitting != panels.size()) {
            drawing.append(": ").append(std::to_string(fitting)).append(" of ");
            drawing.append(number_of(panels.size(), "panel")).append(" fit; name fewer channels");
        }
        drawing = shortened(drawing, size.columns) + '\n';
        const terminal_drawer drawer(panels, curves_->time_name(), size.columns);
        for (std::size_t i = 0; i != fitting; ++i) {
            drawing += drawer.draw(panels[i], rows / static_cast<unsigned>(fitting));
        }
        return drawing;
    }

    // Waits half a second or longer, until a recorder may have saved; throws closed_pipe when
    // nobody reads the output any more.
    static void wait(std::chrono::steady_clock::duration at_least)
    {
        using namespace std::chrono_literals;
        const auto end = std::chrono::steady_clock::now() +
                         std::max<std::chrono::steady_clock::duration>(at_least, 500ms);
        while (!interrupted && std::chrono::steady_clock::now() < end) follower::wait(100ms);
    }

    const plot_options& wanted_;
    plot_source& source_;
    follower recorder_;
    output out_;
    screen screen_{out_};
    std::optional<curve_set> curves_;
};

}  // namespace

void follow_plot(const plot_options& wanted, plot_source& source)
{
    live_plot(wanted, source).run();
}

}  // namespace tool
