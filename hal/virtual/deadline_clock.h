#pragma once

#include <atomic>
#include <cstdint>

namespace tolvane::hal {

/// The times at which cycles are due, evenly spaced on the monotonic clock, without drift. If a cycle begins
/// a whole period late or more, the spacing restarts from that moment, so that no burst of cycles makes up
/// for the delay.
class DeadlineClock {
 public:
  DeadlineClock(double sampleRateHz, std::uint32_t frames) noexcept;

  /// Changes the cycle length from the next cycle on. [io-thread]
  void setFrames(std::uint32_t frames) noexcept;

  /// Sleeps until the next cycle is due or `stop` is seen. [io-thread]
  void sleep(const std::atomic<bool>& stop) noexcept;

  /// Begins the cycle that sleep() waited for. True if it begins a whole period late or more. [io-thread]
  bool begin() noexcept;

  /// When the current cycle was due, in nanoseconds of the monotonic clock. [io-thread]
  [[nodiscard]] std::int64_t dueNs() const noexcept { return dueNs_; }
  [[nodiscard]] std::int64_t periodNs() const noexcept;

 private:
  [[nodiscard]] std::int64_t nextDueNs() const noexcept;
  void restart(std::int64_t atNs) noexcept;

  double sampleRateHz_;
  std::uint32_t frames_;
  std::int64_t originNs_;     // where the even spacing starts
  std::uint64_t cycles_ = 0;  // begun since the origin
  std::int64_t dueNs_ = 0;
};

/// Nanoseconds of the monotonic clock. [any-thread]
std::int64_t monotonicNs() noexcept;

}  // namespace tolvane::hal
