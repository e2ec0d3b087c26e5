#include "plotting/screen.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace tool {

screen::screen(output& out) : out_(out), on_terminal_(isatty(STDOUT_FILENO) != 0) {}

terminal_size screen::size()
{
    return size_of_terminal(STDOUT_FILENO, {80, 25});
}

void screen::show(std::string_view drawing)
{
    if (!on_terminal_) {
        if (columns_ != 0) out_.put('\n');
        out_.put(drawing);
    } else {
        // Scrolls up what was there before.
        if (has_changed()) out_.put(std::string(size().rows, '\n'));
        out_.put("\033[H");
        put_in_place(drawing);
    }
    columns_ = size().columns;
    rows_ = size().rows;
    out_.flush();
}

void screen::close()
{
    if (on_terminal_ && columns_ != 0) out_.put('\n');
    out_.flush();
}

void screen::put_in_place(std::string_view drawing)
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

}  // namespace tool
