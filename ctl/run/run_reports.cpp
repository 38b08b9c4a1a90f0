#include "ctl/run/run_reports.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl {

namespace {

constexpr std::chrono::milliseconds kFirstCycleLook{10};
/// Several, so that one that comes late is not the end.
constexpr int kSignsOfLife = 4;

/// Asked for again and again while the device is waited for.
constexpr std::chrono::seconds kTimeToStart{30};

}  // namespace

void WaitReports::tell(Time now) {
  if (now < due_) return;
  manager_.askForTime(kTimeToStart);
  due_ = now + kTimeToStart / kSignsOfLife;
}

RunReports::RunReports(const ServiceManager& manager, std::string deviceName)
    : manager_(manager), deviceName_(std::move(deviceName)) {
  if (manager_.isListening()) due_ = Clock::now();
}

void RunReports::tell(Time now, std::uint64_t cycles, bool deviceIsThere) {
  if (!due_) return;
  if (isReady_) tellStatus(deviceIsThere);
  if (now < *due_) return;
  const bool isAlive = cycles > std::exchange(cyclesSeen_, cycles) || !deviceIsThere;
  if (!isReady_) {
    isReady_ = cycles > 0 && manager_.tellReady("routing on " + deviceName_);
  } else if (isAlive && manager_.watchdog()) {
    manager_.tellAlive();
  }
  due_ = nextAfter(now);
}

void RunReports::tellStatus(bool deviceIsThere) {
  if (deviceIsThere == deviceWasThere_) return;
  deviceWasThere_ = deviceIsThere;
  manager_.tellStatus(deviceIsThere ? "routing on " + deviceName_
                                    : "waiting for " + deviceName_ + " to come back");
}

RunReports::Time RunReports::nextAfter(Time now) const {
  if (!isReady_) return now + kFirstCycleLook;
  // A time far off, not none: due_ also says whether the manager listens.
  constexpr std::chrono::microseconds kLongest = std::chrono::hours(1);
  return now + std::min(manager_.watchdog().value_or(kLongest), kLongest) / kSignsOfLife;
}

}  // namespace tolvane::ctl
