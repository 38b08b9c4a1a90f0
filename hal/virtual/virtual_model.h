#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "hal/driver/driver.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::hal {

/// The configuration of the virtual device, and its running sessions. One per process, never destroyed.
class VirtualModel {
 public:
  static constexpr std::uint32_t kMinBufferFrames = 16;
  static constexpr std::uint32_t kMaxBufferFrames = 8192;

  static VirtualModel& shared();

  /// Like configureVirtualDevice. [not-io]
  OSStatus configure(const VirtualDeviceConfig& config);
  [[nodiscard]] VirtualDeviceConfig config() const;
  [[nodiscard]] DeviceInfo info() const;

  /// Sets the buffer size from the next cycle on, also in running sessions. [not-io]
  void setBufferFrames(std::uint32_t frames);
  [[nodiscard]] std::uint32_t bufferFrames() const noexcept { return bufferFrames_.load(); }

  /// How sessions that begin from now on run. [not-io]
  void setRehearsal(const TolvaneRehearsal& rehearsal);

  /// What a session keeps from its begin to its end.
  struct SessionConfig {
    VirtualDeviceConfig device;
    TolvaneRehearsal rehearsal;
  };
  /// Begins a session and returns its configuration, which stays the same until endSession(). [not-io]
  SessionConfig beginSession();
  void endSession();

  /// Tells the observer of every change from now on. [not-io]
  void observe(Driver& driver, DeviceObserver& observer);

 private:
  void tell() const;

  mutable std::mutex mutex_;
  VirtualDeviceConfig config_;
  TolvaneRehearsal rehearsal_{};
  std::atomic<std::uint32_t> bufferFrames_{config_.bufferFrames};
  int sessions_ = 0;
  Driver* driver_ = nullptr;
  DeviceObserver* observer_ = nullptr;
};

}  // namespace tolvane::hal
