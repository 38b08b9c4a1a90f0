#pragma once

#include <atomic>
#include <cstdint>

#include "ctl/wake_pipe.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// What the HAL tells of one device while it is listened to: overloads, and that it went or came back.
/// [main-thread] but for the counting itself, which is the HAL's notification thread's.
class DeviceEvents {
 public:
  explicit DeviceEvents(AudioDeviceID device);
  DeviceEvents(const DeviceEvents&) = delete;
  DeviceEvents& operator=(const DeviceEvents&) = delete;
  /// When it has returned, nothing more is told.
  ~DeviceEvents();

  /// Why nothing can be told; noErr when it can.
  [[nodiscard]] OSStatus status() const noexcept { return status_; }

  /// Readable when the device may have gone or come back. To be polled.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }

  /// Deadlines that were missed since construction. [any-thread]
  [[nodiscard]] std::uint64_t overloads() const noexcept { return overloads_.load(); }

  /// Asks the device, and empties the descriptor. A device that does not answer is not alive.
  [[nodiscard]] bool isAlive() const;

 private:
  static OSStatus told(AudioObjectID device, UInt32 count, const AudioObjectPropertyAddress* addresses,
                       void* clientData);

  AudioDeviceID device_;
  WakePipe wake_;
  OSStatus status_ = noErr;
  std::atomic<std::uint64_t> overloads_{0};
};

}  // namespace tolvane::ctl
