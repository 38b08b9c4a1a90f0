#pragma once

#include <set>
#include <string>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// The rule that makes one list of several drivers' answers: what an earlier driver has listed is not listed
/// again, by whatever way a later one reaches it. Not thread-safe. [not-io]
class ListedAlready {
 public:
  /// The drivers are taken in their order. False for one whose `server` (empty for none) an earlier one has:
  /// it is passed over.
  [[nodiscard]] bool begin(const std::string& server);

  /// The device has been listed: one of its identity, or, by earlier drivers, all of its cards.
  [[nodiscard]] bool has(const DeviceInfo& device) const;

  /// Lists it, as one of the driver that was begun last.
  void add(const DeviceInfo& device);

 private:
  std::set<std::string> servers_;
  std::set<std::string> uids_;
  std::set<int> cards_;           // of earlier drivers
  std::set<int> cardsOfThisOne_;  // a driver may have several devices on one card
};

}  // namespace tolvane::hal
