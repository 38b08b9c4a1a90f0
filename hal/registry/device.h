#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hal/registry/driver_poller.h"

namespace tolvane::hal {

/// One device that has been listed at least once: its identity, the driver's last report, and what its
/// running sessions report now. A device is never deleted, so its object identifier stays its own.
class Device {
 public:
  Device(AudioObjectID id, std::shared_ptr<DriverPoller> poller, DeviceInfo info, Clock::time_point listedAt);

  [[nodiscard]] AudioObjectID id() const noexcept { return id_; }

  // Updates from device lists. [not-io]
  void list(std::shared_ptr<DriverPoller> poller, DeviceInfo info, Clock::time_point listedAt);
  void unlist();
  /// The driver's last report, even if the device is gone.
  [[nodiscard]] DeviceInfo info() const;
  /// A text of the channel, counted from 0; empty if there is none. [not-io]
  [[nodiscard]] std::string channelText(std::vector<ChannelInfo> DeviceInfo::*direction, std::size_t channel,
                                        std::string ChannelInfo::*text) const;
  [[nodiscard]] std::shared_ptr<DriverPoller> poller() const;
  /// The time at which the driver was asked for its last answer; none if that answer did not name the device.
  [[nodiscard]] std::optional<Clock::time_point> listedAt() const;

  // Updates from sessions. [any-thread]
  void countOverload() noexcept { overloads_.fetch_add(1, std::memory_order_relaxed); }
  /// `session` stands for the one that reports: several may run on one device.
  void sessionFormat(const void* session, double sampleRateHz, std::uint32_t bufferFrames) noexcept;
  void sessionLinks(const void* session, RemovedLinks removed);  // [not-io]
  /// The session is over. The driver's report applies again, unless another session has reported since.
  /// [not-io]
  void forgetSession(const void* session);

  /// What a running session reports, else the driver's last report. [not-io]
  [[nodiscard]] double sampleRateHz() const;
  [[nodiscard]] std::uint32_t bufferFrames() const;
  [[nodiscard]] std::uint32_t overloads() const noexcept;
  /// What the running session has reported; empty without one. [not-io]
  [[nodiscard]] RemovedLinks removedLinks() const;

  /// The selectors of the properties that have changed since the last call, with one 'over' for each
  /// overload. 'slay' and 'rmln' stand for both of their scopes. `alive` is the current value of 'livn'.
  /// [not-io]
  std::vector<AudioObjectPropertySelector> takeChanges(bool alive);
  /// The channels' names that had changed by the last takeChanges() and were not taken yet. [not-io]
  std::vector<AudioObjectPropertyAddress> takeRenames();

 private:
  struct Published {
    DeviceInfo info;
    bool alive = true;
    std::uint32_t overloads = 0;
    RemovedLinks removedLinks = {};
  };

  [[nodiscard]] double sampleRateLocked() const;
  [[nodiscard]] std::uint32_t bufferFramesLocked() const;
  void takeListChanges(std::vector<AudioObjectPropertySelector>& changes);

  const AudioObjectID id_;
  std::atomic<const void*> formatReporter_{nullptr};
  std::atomic<double> sessionSampleRateHz_{0.0};  // 0: no session has reported
  std::atomic<std::uint32_t> sessionBufferFrames_{0};
  std::atomic<std::uint32_t> overloads_{0};

  mutable std::mutex mutex_;
  std::shared_ptr<DriverPoller> poller_;
  DeviceInfo info_;
  std::optional<Clock::time_point> listedAt_;
  const void* linksReporter_ = nullptr;
  RemovedLinks removedLinks_;
  Published published_;
  std::vector<AudioObjectPropertyAddress> renames_;
  bool relisted_ = false;  // info_ has changed since published_.info was taken
};

}  // namespace tolvane::hal
