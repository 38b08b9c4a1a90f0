#pragma once

#include <set>
#include <string>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// The rule that makes one list of several drivers' answers: what an earlier driver has listed is not listed
/// again, by whatever way a later one reaches it. Not thread-safe. [not-io]
class ListedAlready {
 public:
  /// Begins the next driver, in their order.
  void begin();

  /// The device has been listed: one of its identity, or, by earlier drivers, all of its cards.
  [[nodiscard]] bool has(const DeviceInfo& device) const;

  /// Lists it, as one of the driver that was begun last.
  void add(const DeviceInfo& device);

 private:
  std::set<std::string> uids_;
  std::set<int> cards_;           // of earlier drivers
  std::set<int> cardsOfThisOne_;  // a driver may have several devices on one card
};

}  // namespace tolvane::hal
