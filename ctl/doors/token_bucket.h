#pragma once

#include <algorithm>
#include <chrono>

namespace tolvane::ctl {

/// Limits a rate, with bursts. [any-thread, one at a time]
class TokenBucket {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Full at first.
  TokenBucket(double perSecond, double burst) : perSecond_(perSecond), burst_(burst), left_(burst) {}

  /// Takes one if there is one at `now`. False: the rate is exceeded.
  [[nodiscard]] bool take(Time now) noexcept {
    const std::chrono::duration<double> passed = now - last_;
    left_ = std::min(burst_, left_ + std::max(0.0, passed.count()) * perSecond_);
    last_ = now;
    if (left_ < 1.0) return false;
    left_ -= 1.0;
    return true;
  }

 private:
  double perSecond_;
  double burst_;
  double left_;
  Time last_;
};

}  // namespace tolvane::ctl
