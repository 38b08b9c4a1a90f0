// Time measurement on a machine that sometimes stalls, which is not the fault of the measured code.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <list>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include "support/memory_waits.h"

namespace tolvane::test {

/// Measures how long one processor has stalled since construction. A thread of the highest priority sleeps on
/// it until deadlines and adds up how late it wakes.
class ProcessorWatch {
 public:
  explicit ProcessorWatch(std::size_t processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    ::pthread_setaffinity_np(thread_.native_handle(), sizeof set, &set);
    const sched_param first{::sched_get_priority_max(SCHED_FIFO)};
    ::pthread_setschedparam(thread_.native_handle(), SCHED_FIFO, &first);
  }
  ~ProcessorWatch() {
    isEnding_ = true;
    thread_.join();
  }
  ProcessorWatch(const ProcessorWatch&) = delete;
  ProcessorWatch& operator=(const ProcessorWatch&) = delete;

  [[nodiscard]] std::chrono::milliseconds stalled() const { return milliseconds(stalled_); }
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

/// Watches every processor that this process may run on, since one can stall while the others go on.
class StallWatch {
 public:
  StallWatch() {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    ::sched_getaffinity(0, sizeof allowed, &allowed);
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
      if (CPU_ISSET(processor, &allowed)) processors_.emplace_back(processor);
    }
  }

  /// The total time of all stalls of the processor that stalled the longest in total.
  [[nodiscard]] std::chrono::milliseconds stalled() const { return greatest(&ProcessorWatch::stalled); }

  /// The longest stall of any processor.
  [[nodiscard]] std::chrono::milliseconds longest() const { return greatest(&ProcessorWatch::longest); }

 private:
  using Time = std::chrono::milliseconds (ProcessorWatch::*)() const;

  [[nodiscard]] std::chrono::milliseconds greatest(Time time) const {
    std::chrono::milliseconds greatest{0};
    for (const ProcessorWatch& processor : processors_) greatest = std::max(greatest, (processor.*time)());
    return greatest;
  }

  std::list<ProcessorWatch> processors_;
};

/// The time that the action takes.
template <class Action>
std::chrono::steady_clock::duration timeOf(const Action& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - begin;
}

/// Expects `measure` to return a time below the bound. If only a stall of the machine during the measurement
/// explains a longer time, or if memory had to be fetched, prints so and measures again. What was fetched is
/// there the next time, so a fault of the measured code shows then.
template <class Measure>
void expectWithin(std::chrono::milliseconds bound, const Measure& measure) {
  for (int again = 1;; ++again) {
    const std::uint64_t waitsBefore = memoryWaits();
    const StallWatch watch;
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(measure());
    const auto stalled = watch.stalled();
    const std::uint64_t waits = memoryWaits() - waitsBefore;
    if (time < bound || ::testing::Test::HasFatalFailure()) return;
    if (time - stalled >= bound && waits == 0) {
      ADD_FAILURE() << time.count() << " ms instead of less than " << bound.count()
                    << " ms, with the machine standing still for " << stalled.count()
                    << " ms and no memory fetched";
      return;
    }
    std::cout << "[  STALL   ] " << stalled.count() << " ms of " << time.count() << " ms, memory fetched "
              << waits << " times: measured again (" << again << ")" << std::endl;
  }
}

}  // namespace tolvane::test
