#include "hal/virtual/deadline_clock.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace tolvane::hal {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
// The longest time until a stop is seen.
constexpr std::int64_t kMaxSleepNs = 100'000'000;
// A longer period would practically never end, and would overflow 64 bits when counted.
constexpr double kMaxPeriodNs = 1e15;

void sleepUntil(std::int64_t ns) noexcept {
  const timespec at{static_cast<time_t>(ns / kNsPerSecond), static_cast<long>(ns % kNsPerSecond)};
  clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr);
}

}  // namespace

std::int64_t monotonicNs() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * kNsPerSecond + now.tv_nsec;
}

DeadlineClock::DeadlineClock(double sampleRateHz, std::uint32_t frames) noexcept
    : sampleRateHz_(sampleRateHz), frames_(frames), originNs_(monotonicNs()) {}

std::int64_t DeadlineClock::periodNs() const noexcept {
  return std::llround(std::min(frames_ * 1e9 / sampleRateHz_, kMaxPeriodNs));
}

std::int64_t DeadlineClock::nextDueNs() const noexcept {
  const double periodNs = std::min(frames_ * 1e9 / sampleRateHz_, kMaxPeriodNs);
  return originNs_ + std::llround(static_cast<double>(cycles_) * periodNs);
}

void DeadlineClock::restart(std::int64_t atNs) noexcept {
  originNs_ = atNs;
  cycles_ = 0;
}

void DeadlineClock::setFrames(std::uint32_t frames) noexcept {
  restart(nextDueNs());
  frames_ = frames;
}

void DeadlineClock::sleep(const std::atomic<bool>& stop) noexcept {
  const std::int64_t dueNs = nextDueNs();
  for (std::int64_t now = monotonicNs(); now < dueNs && !stop.load(); now = monotonicNs()) {
    sleepUntil(std::min(dueNs, now + kMaxSleepNs));
  }
}

bool DeadlineClock::begin() noexcept {
  const std::int64_t now = monotonicNs();
  const bool missed = now - nextDueNs() >= periodNs();
  if (missed) restart(now);
  dueNs_ = nextDueNs();
  ++cycles_;
  return missed;
}

}  // namespace tolvane::hal
