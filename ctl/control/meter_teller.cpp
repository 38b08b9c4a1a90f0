#include "ctl/control/meter_teller.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl::control {

namespace {

/// The next cycle answers, so it is asked for this often.
constexpr std::chrono::milliseconds kLook{2};
/// A device that has not answered by then is asked at the next interval only.
constexpr std::chrono::milliseconds kLongestLook{20};

}  // namespace

std::optional<Meters> MeterTeller::read(Time now, bool isWanted) {
  if (meter_ == nullptr) return std::nullopt;
  const bool wasWanted = std::exchange(isWanted_, isWanted);
  if (!isWanted) return std::nullopt;
  auto meters = take();
  if (!wasWanted) {
    isStale_ = true;
    next_ = now;
    meters.reset();
  }
  if (meters && std::exchange(isStale_, false)) {
    next_ = now + kInterval;  // a whole interval for the first reading that is told
    meters.reset();
  }
  if (now >= next_) ask(now);
  return meters;
}

void MeterTeller::ask(Time now) {
  meter_->ask();
  isAsked_ = true;
  next_ += kInterval;
  if (next_ <= now) next_ = now + kInterval;
}

std::optional<Meters> MeterTeller::take() {
  auto meters = meter_->take();
  if (!meters) return std::nullopt;
  isAsked_ = false;
  if (!std::exchange(isBeforeReset_, false)) {
    clips_.hold(*meters);
  } else {
    for (auto* levels : {&meters->inputs, &meters->outputs})
      for (Level& level : *levels) level.isClipped = false;
  }
  return meters;
}

void MeterTeller::resetClips() {
  clips_.reset();
  if (meter_ == nullptr) return;
  // What has been measured until now may hold the clips that the reset is meant for.
  static_cast<void>(meter_->take());
  meter_->ask();
  isAsked_ = true;
  isBeforeReset_ = true;
}

MeterTeller::Time MeterTeller::due(Time now) const {
  if (meter_ == nullptr) return Time::max();
  const bool isLooking = isAsked_ && now < next_ - kInterval + kLongestLook;
  return isLooking ? std::min(next_, now + kLook) : next_;
}

}  // namespace tolvane::ctl::control
