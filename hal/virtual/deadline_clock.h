#pragma once

#include <atomic>
#include <cstdint>

namespace tolvane::hal {

/// The moments at which cycles are due: evenly spaced on the monotonic clock, without drift, until one is
/// missed by a whole period; then they go on from the moment of the miss, so that no burst of cycles makes up
/// for it.
class DeadlineClock {
 public:
  DeadlineClock(double sampleRateHz, std::uint32_t frames) noexcept;

  /// Goes on with cycles of this length from the next one on. [io-thread]
  void setFrames(std::uint32_t frames) noexcept;

  /// Sleeps until the next cycle is due or `stop` is seen. [io-thread]
  void sleep(const std::atomic<bool>& stop) noexcept;

  /// Begins the cycle that was slept for; true when it begins a period late or more. [io-thread]
  bool begin() noexcept;

  /// When the cycle that has begun was due, in nanoseconds of the monotonic clock. [io-thread]
  [[nodiscard]] std::int64_t dueNs() const noexcept { return dueNs_; }
  [[nodiscard]] std::int64_t periodNs() const noexcept;

 private:
  [[nodiscard]] std::int64_t nextDueNs() const noexcept;
  void restart(std::int64_t atNs) noexcept;

  double sampleRateHz_;
  std::uint32_t frames_;
  std::int64_t originNs_;     // of the even spacing
  std::uint64_t cycles_ = 0;  // begun since the origin
  std::int64_t dueNs_ = 0;
};

/// Nanoseconds of the monotonic clock. [any-thread]
std::int64_t monotonicNs() noexcept;

}  // namespace tolvane::hal
