#pragma once

#include <set>
#include <string>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// Merges the answers of several drivers into one list: what an earlier driver has listed is not listed
/// again, however a later one reaches it. Not thread-safe. [not-io]
class ListedAlready {
 public:
  /// Begins the next driver, in list order.
  void begin();

  /// True if a device of the same uid is listed, or if earlier drivers have listed all of the device's sound
  /// cards.
  [[nodiscard]] bool has(const DeviceInfo& device) const;

  /// Lists the device as one of the current driver.
  void add(const DeviceInfo& device);

 private:
  std::set<std::string> uids_;
  std::set<int> cards_;           // of earlier drivers
  std::set<int> cardsOfThisOne_;  // a driver may have several devices on one card
};

}  // namespace tolvane::hal
