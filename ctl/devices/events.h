#pragma once

#include <atomic>
#include <cstdint>

#include "ctl/process/wake_pipe.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// Listens to one device's notifications: overloads, that the device went or came back, and that somebody
/// removed links. The listener runs on the HAL's notification thread, everything else is [main-thread].
class DeviceEvents {
 public:
  explicit DeviceEvents(AudioDeviceID device);
  DeviceEvents(const DeviceEvents&) = delete;
  DeviceEvents& operator=(const DeviceEvents&) = delete;
  /// After it returns, no notification arrives any more.
  ~DeviceEvents();

  /// noErr, or why the device cannot be listened to.
  [[nodiscard]] OSStatus status() const noexcept { return status_; }

  /// For poll(): readable when the device may have gone or come back, or links may have been removed.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }

  /// Overloads since construction. [any-thread]
  [[nodiscard]] std::uint64_t overloads() const noexcept { return overloads_.load(); }

  /// Drains the descriptor and asks the device. A device that does not answer is not alive.
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
