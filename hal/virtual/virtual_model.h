#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "hal/driver/driver.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::hal {

/// What the virtual device is, and who runs on it. One for the process, never destroyed.
class VirtualModel {
 public:
  static constexpr std::uint32_t kMinBufferFrames = 16;
  static constexpr std::uint32_t kMaxBufferFrames = 8192;

  static VirtualModel& shared();

  /// As configureVirtualDevice. [not-io]
  OSStatus configure(const VirtualDeviceConfig& config);
  [[nodiscard]] VirtualDeviceConfig config() const;
  [[nodiscard]] DeviceInfo info() const;

  /// From the next cycle on, of running sessions too. [not-io]
  void setBufferFrames(std::uint32_t frames);
  [[nodiscard]] std::uint32_t bufferFrames() const noexcept { return bufferFrames_.load(); }

  /// The configuration of a session that begins, which keeps it as it is until the session ends. [not-io]
  VirtualDeviceConfig beginSession();
  void endSession();

  /// Tells the observer of every change from now on. [not-io]
  void observe(Driver& driver, DeviceObserver& observer);

 private:
  void tell() const;

  mutable std::mutex mutex_;
  VirtualDeviceConfig config_;
  std::atomic<std::uint32_t> bufferFrames_{config_.bufferFrames};
  int sessions_ = 0;
  Driver* driver_ = nullptr;
  DeviceObserver* observer_ = nullptr;
};

}  // namespace tolvane::hal
