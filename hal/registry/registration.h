#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "hal/registry/run.h"

namespace tolvane::hal {

/// A callback registered on a device: wanted from its start to its stop, and run by a session as long as the
/// device is there.
class Registration {
 public:
  enum class Presence { idle, there, lost };

  Registration(std::shared_ptr<Device> device, AudioDeviceIOProc proc, void* clientData);

  [[nodiscard]] const std::shared_ptr<Device>& device() const noexcept { return device_; }

  /// As AudioDeviceStart and AudioDeviceStop. [not-io]
  OSStatus start();
  void stop();

  /// For the end of the process: has the session ended without waiting. [not-io]
  void abandon();
  /// Waits until what abandon() began is done. [not-io]
  void waitAbandoned(Clock::time_point deadline);

  /// Whether the device is there for this registration. [not-io]
  [[nodiscard]] Presence presence() const;

  /// The thread that runs the callback, by its kernel id; 0 while none does. [not-io]
  [[nodiscard]] pid_t ioThread() const;

  /// Moves on with a lost device: notes the loss, and starts a session when the device is listed again.
  /// Returns at once; to be called again and again while presence() is not idle. [not-io]
  void supervise(Clock::time_point now);

 private:
  using RunRef = std::shared_ptr<Run>;

  RunRef newRun();
  OSStatus startedStatus(const RunRef& run);
  void superviseRun(Clock::time_point now);
  void superviseSession(Clock::time_point now);
  [[nodiscard]] bool listedAgain() const;
  [[nodiscard]] bool outgoingBlocks(Clock::time_point now) const;
  void replaceRun(Clock::time_point now);

  const std::shared_ptr<Device> device_;
  const AudioDeviceIOProc proc_;
  void* const clientData_;

  std::mutex stopping_;  // one stop at a time: each returns when the callback has stopped

  mutable std::mutex mutex_;  // never held while a driver or the callback is waited for
  bool wanted_ = false;
  bool starting_ = false;  // a caller of start() waits for the run
  DeviceInfo promised_;    // its streams are what the callback was started with
  RunRef run_;
  RunRef outgoing_;  // the one before, being ended
  Clock::time_point begunAt_;
  Clock::time_point outgoingSince_;
  Clock::time_point retryAt_;
  std::optional<Clock::time_point> lostAt_;  // when the session said so
  std::optional<Clock::time_point> backAt_;  // when the device was seen listed after that
};

}  // namespace tolvane::hal
