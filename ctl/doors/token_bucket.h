#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace tolvane::ctl {

/// Limits a rate, with bursts. [any-thread, one at a time]
class TokenBucket {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Full at first.
  TokenBucket(double perSecond, double burst) : perSecond_(perSecond), burst_(burst), left_(burst) {}

  /// Takes so many if they are there at `now`. False: the rate is exceeded, and none is taken.
  [[nodiscard]] bool take(Time now, std::size_t count = 1) noexcept {
    const std::chrono::duration<double> passed = now - last_;
    left_ = std::min(burst_, left_ + std::max(0.0, passed.count()) * perSecond_);
    last_ = now;
    const auto cost = static_cast<double>(count);
    if (left_ < cost) return false;
    left_ -= cost;
    return true;
  }

  /// Returns one that was taken.
  void giveBack() noexcept { left_ = std::min(burst_, left_ + 1); }

 private:
  double perSecond_;
  double burst_;
  double left_;
  Time last_;
};

}  // namespace tolvane::ctl
