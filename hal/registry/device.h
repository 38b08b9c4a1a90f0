#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "hal/registry/driver_desk.h"

namespace tolvane::hal {

/// One device that has ever been listed: an identity, what its driver last said of it, and what its running
/// sessions say now. It is never forgotten, so that its object identifier stays its own.
class Device {
 public:
  Device(AudioObjectID id, std::shared_ptr<DriverDesk> desk, DeviceInfo info, Clock::time_point listedAt);

  [[nodiscard]] AudioObjectID id() const noexcept { return id_; }

  // From lists. [not-io]
  void list(std::shared_ptr<DriverDesk> desk, DeviceInfo info, Clock::time_point listedAt);
  void unlist();
  /// What the driver last said, also of a device that is gone.
  [[nodiscard]] DeviceInfo info() const;
  [[nodiscard]] std::shared_ptr<DriverDesk> desk() const;
  /// When the driver was last asked and named the device; none when it did not name it the last time.
  [[nodiscard]] std::optional<Clock::time_point> listedAt() const;

  // From sessions. [any-thread]
  void countOverload() noexcept { overloads_.fetch_add(1, std::memory_order_relaxed); }
  void sessionFormat(double sampleRateHz, std::uint32_t bufferFrames) noexcept;
  /// The session is over: what lists say holds again.
  void forgetSessionFormat() noexcept { sessionFormat(0.0, 0); }

  /// What a running session says, else what the driver last said. [not-io]
  [[nodiscard]] double sampleRateHz() const;
  [[nodiscard]] std::uint32_t bufferFrames() const;
  [[nodiscard]] std::uint32_t overloads() const noexcept;

  /// The properties whose value is another than at the last call, by selector, one 'over' for each overload.
  /// `alive` is the device's present value of 'livn'. [not-io]
  std::vector<AudioObjectPropertySelector> takeChanges(bool alive);

 private:
  struct Published {
    DeviceInfo info;
    bool alive = true;
    std::uint32_t overloads = 0;
  };

  [[nodiscard]] double sampleRateLocked() const;
  [[nodiscard]] std::uint32_t bufferFramesLocked() const;
  void takeListChanges(std::vector<AudioObjectPropertySelector>& changes);

  const AudioObjectID id_;
  std::atomic<double> sessionSampleRateHz_{0.0};  // 0: no session has said
  std::atomic<std::uint32_t> sessionBufferFrames_{0};
  std::atomic<std::uint32_t> overloads_{0};

  mutable std::mutex mutex_;
  std::shared_ptr<DriverDesk> desk_;
  DeviceInfo info_;
  std::optional<Clock::time_point> listedAt_;
  Published published_;
  bool relisted_ = false;  // info_ is another than published_.info
};

}  // namespace tolvane::hal
