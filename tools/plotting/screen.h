#pragma once

#include <string_view>

#include "console/output.h"

namespace tool {

/// Shows one drawing after the other; on a terminal each in place of the last.
class screen {
  public:
    explicit screen(output& out);

    /// The size of the terminal; 80 columns and 25 rows if it has none, or is no terminal.
    static terminal_size size();
    bool has_changed() const { return !(size().columns == columns_ && size().rows == rows_); }

    /// Replaces what is shown. REQUIRES: it has no more lines than the screen.
    void show(std::string_view drawing);

    /// Ends the last line.
    void close();

  private:
    void put_in_place(std::string_view drawing);

    output& out_;
    bool on_terminal_;
    unsigned columns_ = 0;  // when it was last shown; 0 before
    unsigned rows_ = 0;
};

}  // namespace tool
