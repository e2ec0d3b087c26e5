#pragma once

#include <set>
#include <string>

#include "commands/commands.h"
#include "plotting/curves.h"

namespace tool {

/// What a plot reports about channels: each message once, even if the file is drawn again and
/// again.
class plot_report {
  public:
    explicit plot_report(const plot_options& wanted) : wanted_(wanted) {}

    /// False once something that was asked for could not be drawn.
    bool succeeded() const { return succeeded_; }
    void fail() { succeeded_ = false; }

    /// A channel that is left out.
    void left_out(const selected_channel& c);

    /// A channel whose values cannot be read.
    void unreadable(const selected_channel& c, const std::string& message);

    /// What a curve lacks, after it was read.
    void missing(const curve& c);

    /// There is nothing to draw. Throws a failure unless the messages about channels say why.
    void nothing_drawn();

  private:
    std::string too_large(const curve& c) const;
    void report_error(const selected_channel& c, const std::string& message);
    void note(const selected_channel& c, const std::string& message);

    const plot_options& wanted_;
    std::set<std::string> messages_;
    bool succeeded_ = true;
};

}  // namespace tool
