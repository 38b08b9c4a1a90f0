#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "ctl/process/service_manager.h"

namespace tolvane::ctl {

/// Tells the service manager that a run waits for its device, so that the wait does not count as a start that
/// hangs. [main-thread]
class WaitReports {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `manager` must outlive the object.
  explicit WaitReports(const ServiceManager& manager) : manager_(manager) {}

  /// Sends what is due at `now`. To be called at least once a second.
  void tell(Time now);

 private:
  const ServiceManager& manager_;
  Time due_ = Time();
};

/// Tells the service manager how a run fares. The run is ready when its first cycle has passed. From then on
/// a sign of life is sent several times in each span of the watchdog, as long as cycles pass or the device is
/// known to be gone. A device that is there and runs no cycles is thus a hang, which the manager ends.
/// [main-thread]
class RunReports {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;

  /// `manager` must outlive the object.
  RunReports(const ServiceManager& manager, std::string deviceName);

  /// Sends what is due at `now`, for a run of so many cycles up to now.
  void tell(Time now, std::uint64_t cycles, bool deviceIsThere);

  /// When tell() must be called next; none if never.
  [[nodiscard]] std::optional<Time> due() const noexcept { return due_; }

  /// The run ends by itself now.
  void tellStopping() const { manager_.tellStopping(); }

 private:
  void tellStatus(bool deviceIsThere);
  [[nodiscard]] Time nextAfter(Time now) const;

  const ServiceManager& manager_;
  std::string deviceName_;
  std::optional<Time> due_;
  std::uint64_t cyclesSeen_ = 0;
  bool isReady_ = false;
  bool deviceWasThere_ = true;
};

}  // namespace tolvane::ctl
