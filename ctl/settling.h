#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace tolvane::ctl {

/// Waits until something that is being changed has been left alone for a moment, but not for ever: an editor
/// that writes a file in several steps is read once, when it has finished. [main-thread]
class Settling {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;

  /// It was changed now.
  void touch(Time now) {
    const Time first = first_.value_or(now);
    first_ = first;
    due_ = std::min(now + kQuiet, first + kLongest);
  }

  /// When it will have settled; none when nothing was changed.
  [[nodiscard]] std::optional<Time> due() const noexcept { return due_; }

  /// True once, when it has settled.
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
