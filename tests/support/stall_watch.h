// Time measurement on a machine that sometimes stalls, which is not the fault of the measured code.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>

namespace tolvane::test {

/// Measures how long the machine has stalled since construction. A thread of the highest priority sleeps
/// until deadlines and adds up how late it wakes.
class StallWatch {
 public:
  StallWatch() {
    const sched_param first{::sched_get_priority_max(SCHED_FIFO)};
    ::pthread_setschedparam(thread_.native_handle(), SCHED_FIFO, &first);
  }
  ~StallWatch() {
    isEnding_ = true;
    thread_.join();
  }
  StallWatch(const StallWatch&) = delete;
  StallWatch& operator=(const StallWatch&) = delete;

  /// The total time of all stalls.
  [[nodiscard]] std::chrono::milliseconds stalled() const { return milliseconds(stalled_); }

  /// The longest stall.
  [[nodiscard]] std::chrono::milliseconds longest() const { return milliseconds(longest_); }

 private:
  static constexpr std::chrono::milliseconds kPeriod{1};
  static constexpr std::chrono::milliseconds kUsualLateness{2};

  using Ticks = std::atomic<std::chrono::steady_clock::rep>;

  static std::chrono::milliseconds milliseconds(const Ticks& ticks) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::duration(ticks.load()));
  }

  void run() {
    while (!isEnding_) {
      const auto deadline = std::chrono::steady_clock::now() + kPeriod;
      std::this_thread::sleep_until(deadline);
      const auto lateness = std::chrono::steady_clock::now() - deadline;
      if (lateness > kUsualLateness) stalled_ += lateness.count();
      longest_ = std::max(longest_.load(), lateness.count());
    }
  }

  std::atomic<bool> isEnding_ = false;
  Ticks stalled_ = 0;
  Ticks longest_ = 0;
  std::thread thread_{[this] { run(); }};
};

/// The time that the action takes.
template <class Action>
std::chrono::steady_clock::duration timeOf(const Action& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - begin;
}

/// Expects `measure` to return a time below the bound. If only a stall of the machine during the measurement
/// explains a longer time, prints so and measures again.
template <class Measure>
void expectWithin(std::chrono::milliseconds bound, const Measure& measure) {
  for (int again = 1;; ++again) {
    const StallWatch watch;
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(measure());
    const auto stalled = watch.stalled();
    if (time < bound || ::testing::Test::HasFatalFailure()) return;
    if (time - stalled >= bound) {
      ADD_FAILURE() << time.count() << " ms instead of less than " << bound.count()
                    << " ms, with the machine standing still for " << stalled.count() << " ms";
      return;
    }
    std::cout << "[  STALL   ] " << stalled.count() << " ms of " << time.count() << " ms: measured again ("
              << again << ")" << std::endl;
  }
}

}  // namespace tolvane::test
