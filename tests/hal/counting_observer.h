// Observes a driver's reports of device changes.
#pragma once

#include <atomic>

#include "hal/driver/driver.h"

namespace tolvane::test {

/// Counts the reports.
class CountingObserver final : public hal::DeviceObserver {
 public:
  void devicesChanged(hal::Driver& /*driver*/) noexcept override { told_.fetch_add(1); }
  [[nodiscard]] int told() const { return told_; }

 private:
  std::atomic<int> told_ = 0;
};

}  // namespace tolvane::test
