#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <unistd.h>

namespace tolvane::hal {

/// The thread of libjack's that has told a client of the server's death.
class JackLoss {
 public:
  /// From libjack's shutdown callback. [any-thread]
  void note() noexcept { thread_.store(gettid()); }

  /// Before and between the calls that take leave of the client. The thread that told of the loss still has
  /// work to do in libjack, under locks, and then ends by itself: closing would cancel it where it stands,
  /// and leave the locks locked. PipeWire's libjack keeps its thread: hence the limit. [not-io]
  void await() const noexcept {
    const int thread = thread_.load();
    if (thread == 0) return;
    for (int ms = 0; ms < 200 && tgkill(getpid(), thread, 0) == 0; ++ms) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    // So does the thread of the cycles, which finds out by itself and does not say.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }

 private:
  std::atomic<int> thread_{0};
};

}  // namespace tolvane::hal
