#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace tolvane::ctl {

/// Debounces changes: settles 100 ms after the last change, but at most 1 s after the first. A file that an
/// editor writes in several steps is thus read once. [main-thread]
class Debouncer {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;

  /// Notes a change at `now`.
  void touch(Time now) {
    const Time first = first_.value_or(now);
    first_ = first;
    due_ = std::min(now + kQuiet, first + kLongest);
  }

  /// When the changes will have settled; none if there was no change.
  [[nodiscard]] std::optional<Time> due() const noexcept { return due_; }

  /// True once after the changes have settled.
  [[nodiscard]] bool settled(Time now) {
    if (!due_ || now < *due_) return false;
    first_.reset();
    due_.reset();
    return true;
  }

 private:
  static constexpr std::chrono::milliseconds kQuiet{100};
  static constexpr std::chrono::milliseconds kLongest{1000};
  std::optional<Time> first_;
  std::optional<Time> due_;
};

}  // namespace tolvane::ctl
