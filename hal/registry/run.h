#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include <sys/types.h>

#include "hal/registry/buffer_view.h"
#include "hal/registry/device.h"

namespace tolvane::hal {

/// What a registration has called, with the streams that it has been promised.
struct Callback {
  AudioObjectID device;
  AudioDeviceIOProc proc;
  void* clientData;
};

/// True on the thread that is running a callback. [any-thread]
bool onIoThread() noexcept;

/// One session from its start to its end, and the gate between the driver's thread and the callback: once the
/// gate is shut the callback runs no more, whatever the driver still does. The driver's start and the
/// session's end run on threads of their own, which hold the run as long as they last, so that a driver which
/// hangs there keeps nobody else.
class Run final : public SessionClient, public std::enable_shared_from_this<Run> {
 public:
  enum class State { idle, starting, running, failed, ending, over };

  Run(std::shared_ptr<Device> device, const Callback& callback, const DeviceInfo& promised,
      const DeviceInfo& actual);

  /// Has the driver start the session; returns at once. Called once. Fails where there is no thread for it.
  /// [not-io]
  void begin();
  /// Waits until the start has ended, well or not, or the run was ended. False at the deadline. [not-io]
  bool waitBegun(Clock::time_point deadline);

  /// Shuts the gate and has the session ended; returns at once, or, where there is no thread for it, when the
  /// session has ended. Ending twice does nothing. [not-io]
  void end();
  /// Waits until the callback is not running; it will not run again once end() was called. [not-io]
  void waitSilent() const;
  bool waitSilent(Clock::time_point deadline) const;
  /// Waits until the session is gone. False at the deadline. [not-io]
  bool waitOver(Clock::time_point deadline);

  [[nodiscard]] State state() const;
  /// What the driver's start said. [not-io]
  [[nodiscard]] OSStatus status() const;
  [[nodiscard]] bool inCallback() const noexcept { return inCallback_.load(); }
  /// The thread of the cycles, by its kernel id; 0 before the first. [any-thread]
  [[nodiscard]] pid_t ioThread() const noexcept { return ioThread_.load(); }
  /// The session has not said that its device is gone. [any-thread]
  [[nodiscard]] bool alive() const noexcept { return alive_.load(); }

  void cycle(const IoCycle& cycle) noexcept override;
  void overload() noexcept override;
  void aliveChanged(bool alive) noexcept override;
  void formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept override;

 private:
  void startSession();
  std::unique_ptr<Session> takeSession();
  void endSession(std::unique_ptr<Session> session);
  void setState(State state);

  const std::shared_ptr<Device> device_;
  const Callback callback_;
  const DeviceInfo actual_;
  BufferView view_;

  std::atomic<bool> shut_{false};
  std::atomic<bool> inCallback_{false};
  std::atomic<bool> alive_{true};
  std::atomic<pid_t> ioThread_{0};

  mutable std::mutex mutex_;  // never held while the driver is called
  std::condition_variable changed_;
  State state_ = State::idle;
  OSStatus status_ = noErr;
  std::unique_ptr<Session> session_;
};

}  // namespace tolvane::hal
