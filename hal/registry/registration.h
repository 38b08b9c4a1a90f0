#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "hal/registry/run.h"

namespace tolvane::hal {

/// A callback registered on a device. The client wants it from its start to its stop. A session runs it as
/// long as the device is present.
class Registration {
 public:
  enum class Presence { idle, there, lost };

  Registration(std::shared_ptr<Device> device, AudioDeviceIOProc proc, void* clientData);

  [[nodiscard]] const std::shared_ptr<Device>& device() const noexcept { return device_; }

  /// Like AudioDeviceStart and AudioDeviceStop. A start waits for its session until the deadline. [not-io]
  OSStatus start(Clock::time_point deadline);
  void stop();

  /// Ends the session without waiting, at the end of the process. [not-io]
  void abandon();
  /// Waits until the end that abandon() began is complete, or until the deadline. [not-io]
  void waitAbandoned(Clock::time_point deadline);

  /// The state of the device for this registration: idle until a start has succeeded and after the stop, then
  /// there or lost. [not-io]
  [[nodiscard]] Presence presence() const;

  /// Kernel id of the thread that runs the callback; 0 if there is none. [not-io]
  [[nodiscard]] pid_t ioThread() const;
  /// Whether the session's memory is locked; none if no session has said so. [not-io]
  [[nodiscard]] std::optional<bool> isMemoryLocked() const;

  /// Handles a lost device: notes the loss, and starts a session when the device is listed again. Returns at
  /// once. Called repeatedly while presence() is not idle. [not-io]
  void supervise(Clock::time_point now);

 private:
  using RunRef = std::shared_ptr<Run>;

  RunRef newRun();
  OSStatus startedStatus(const RunRef& run);
  RunRef superviseRun(Clock::time_point now);
  [[nodiscard]] bool checkRun(Clock::time_point now);
  [[nodiscard]] bool checkSession(Clock::time_point now);
  [[nodiscard]] bool listedAgain() const;
  [[nodiscard]] bool outgoingBlocks(Clock::time_point now) const;
  RunRef retireRun(Clock::time_point now);

  const std::shared_ptr<Device> device_;
  const AudioDeviceIOProc proc_;
  void* const clientData_;

  std::mutex stopping_;  // one stop at a time: each returns once the callback has stopped

  mutable std::mutex mutex_;  // never held while a run ends or the callback is awaited
  bool wanted_ = false;
  bool starting_ = false;  // a start() call is waiting for the run
  DeviceInfo promised_;    // has the streams that the callback was started with
  RunRef run_;
  RunRef outgoing_;  // the previous run, while it ends
  Clock::time_point begunAt_;
  Clock::time_point outgoingSince_;
  Clock::time_point retryAt_;
  std::optional<Clock::time_point> lostAt_;  // when supervise() saw the loss
  std::optional<Clock::time_point> backAt_;  // when supervise() then saw the device listed again
};

}  // namespace tolvane::hal
