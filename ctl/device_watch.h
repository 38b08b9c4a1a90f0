#pragma once

#include <cstdint>
#include <vector>

#include "ctl/device_list.h"
#include "ctl/exit_status.h"
#include "ctl/wake_pipe.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// Tells when the system's list of devices has changed, from construction to destruction. [main-thread]
class DeviceListEvents {
 public:
  DeviceListEvents();
  DeviceListEvents(const DeviceListEvents&) = delete;
  DeviceListEvents& operator=(const DeviceListEvents&) = delete;
  ~DeviceListEvents();

  /// Readable when the list may have changed. To be polled.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }

  /// Why nothing can be told; noErr when it can.
  [[nodiscard]] OSStatus status() const noexcept { return status_; }

  /// Empties the descriptor; true when it was readable.
  [[nodiscard]] bool take() const;

 private:
  static OSStatus told(AudioObjectID system, UInt32 count, const AudioObjectPropertyAddress* addresses,
                       void* clientData);

  WakePipe wake_;
  OSStatus status_ = noErr;
};

/// What has come and gone between two lists. A device that has other channels or another name than before has
/// gone and come.
struct DeviceChanges {
  std::vector<DeviceDetails> departed;  // in the old list's order
  std::vector<DeviceDetails> arrived;   // in the new list's order
};
[[nodiscard]] DeviceChanges changesBetween(const std::vector<DeviceDetails>& before,
                                           const std::vector<DeviceDetails>& now);

/// Prints the devices, and then a line for each that goes or comes, until SIGINT or SIGTERM. With `json` each
/// device, also of those that are there at first, is an object on a line of its own, with the member "event":
/// "present", "arrived" or "departed". Failed when standard output takes no more. [main-thread]
[[nodiscard]] ExitStatus watchDevices(bool json);

}  // namespace tolvane::ctl
