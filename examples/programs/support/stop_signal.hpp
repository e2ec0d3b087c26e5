// Waiting for SIGTERM and SIGINT, without a handler.
#ifndef EXAMPLES_STOP_SIGNAL_HPP
#define EXAMPLES_STOP_SIGNAL_HPP

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>

/// Create it before any thread: threads inherit the blocked signals.
class stop_signal {
  public:
    stop_signal()
    {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGTERM);
        sigaddset(&signals_, SIGINT);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    }

    void wait() const
    {
        while (sigwaitinfo(&signals_, nullptr) < 0) continue;
    }

    /// Waits until `due`. @return true if a signal came first
    bool wait_until(std::chrono::steady_clock::time_point due) const
    {
        using std::chrono::nanoseconds;
        for (;;) {
            const nanoseconds left = due - std::chrono::steady_clock::now();
            const auto wanted = std::max(left, nanoseconds(0)).count();
            const timespec timeout = {wanted / 1'000'000'000, wanted % 1'000'000'000};
            if (sigtimedwait(&signals_, nullptr, &timeout) >= 0) return true;
            if (left <= nanoseconds(0)) return false;
        }
    }

  private:
    sigset_t signals_{};
};

#endif
