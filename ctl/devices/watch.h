#pragma once

#include <cstdint>
#include <vector>

#include "ctl/devices/list.h"
#include "ctl/devices/options.h"
#include "ctl/process/wake_pipe.h"
#include "ctl/terminal/exit_status.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// Listens for changes of the system's device list, from construction to destruction. [main-thread]
class DeviceListEvents {
 public:
  DeviceListEvents();
  DeviceListEvents(const DeviceListEvents&) = delete;
  DeviceListEvents& operator=(const DeviceListEvents&) = delete;
  ~DeviceListEvents();

  /// For poll(): readable when the list may have changed.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }

  /// noErr, or why the list cannot be listened to.
  [[nodiscard]] OSStatus status() const noexcept { return status_; }

  /// Drains the descriptor. True if it was readable.
  [[nodiscard]] bool take() const;

 private:
  static OSStatus told(AudioObjectID system, UInt32 count, const AudioObjectPropertyAddress* addresses,
                       void* clientData);

  WakePipe wake_;
  OSStatus status_ = noErr;
};

/// The difference between two lists. A device whose name or channel counts changed is in both `departed` and
/// `arrived`.
struct DeviceChanges {
  std::vector<DeviceDetails> departed;  // in the old list's order
  std::vector<DeviceDetails> arrived;   // in the new list's order
};
[[nodiscard]] DeviceChanges changesBetween(const std::vector<DeviceDetails>& before,
                                           const std::vector<DeviceDetails>& now);

/// Prints the devices, then one line for each that departs or arrives, until SIGINT or SIGTERM. First waits
/// up to `waitSeconds` for the sound servers, and reports those that are still silent; their devices arrive
/// later. With `json`, every line is an object, also for the devices present at first; its member "event" is
/// "present", "arrived" or "departed". The long form has the devices' lasting identities. Returns failed if
/// standard output cannot be written. [main-thread]
[[nodiscard]] ExitStatus watchDevices(const DevicesOptions& options);

}  // namespace tolvane::ctl
