#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <unistd.h>

namespace tolvane::hal {

/// Remembers the libjack thread that has told a client of the server's death.
class JackLoss {
 public:
  /// Called from libjack's shutdown callback. [any-thread]
  void note() noexcept { thread_.store(gettid()); }

  /// Called before the client is deactivated, and again before it is closed. The thread that told of the loss
  /// still works in libjack, under locks, and then ends by itself. Closing would cancel that thread where it
  /// is, and the locks would stay locked. PipeWire's libjack keeps its thread, so the wait has a limit.
  /// [not-io]
  void await() const noexcept {
    const int thread = thread_.load();
    if (thread == 0) return;
    for (int ms = 0; ms < 200 && tgkill(getpid(), thread, 0) == 0; ++ms) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    // The thread of the cycles also ends by itself, but does not tell us: give it some time.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }

 private:
  std::atomic<int> thread_{0};
};

}  // namespace tolvane::hal
