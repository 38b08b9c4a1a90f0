#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <sys/types.h>

#include "hal/driver/call_gate.h"
#include "hal/registry/buffer_view.h"
#include "hal/registry/device.h"

namespace tolvane::hal {

/// The callback of a registration, with its device and client data.
struct Callback {
  AudioObjectID device;
  AudioDeviceIOProc proc;
  void* clientData;
};

/// True if the calling thread is running a callback. [any-thread]
bool onIoThread() noexcept;

/// One session from start to end, with a gate between the driver's thread and the callback. Once the gate is
/// shut, the callback never runs again, whatever the driver does. The driver's start and the end of the
/// session run on threads of their own, which keep the run alive, so a driver that hangs there blocks nobody
/// else.
class Run final : public SessionClient, public std::enable_shared_from_this<Run> {
 public:
  enum class State { idle, starting, running, failed, ending, over };

  Run(std::shared_ptr<Device> device, const Callback& callback, const DeviceInfo& promised,
      const DeviceInfo& actual);

  /// Starts the session on a thread of its own and returns at once. Called once. The run fails if no thread
  /// can be created. [not-io]
  void begin();
  /// Waits until the start has succeeded or failed, or the run was ended. False at the deadline. [not-io]
  bool waitBegun(Clock::time_point deadline);

  /// Shuts the gate: the callback does not begin again. Does not wait for one that is running. [any-thread]
  void shutGate() noexcept { gate_.beginShut(); }
  /// Shuts the gate, then ends the session on a thread of its own and returns at once. If no thread can be
  /// created, ends the session before returning. Ending again does nothing. [not-io]
  void end();
  /// Waits until the callback is not running. It does not run again after shutGate(). With a deadline: false
  /// when that is reached. [not-io]
  bool waitSilent(Clock::time_point deadline = Clock::time_point::max()) { return gate_.waitEmpty(deadline); }
  /// Waits until the session is gone. False at the deadline. [not-io]
  bool waitOver(Clock::time_point deadline);

  [[nodiscard]] State state() const;
  /// The status of the driver's start. [not-io]
  [[nodiscard]] OSStatus status() const;
  [[nodiscard]] bool inCallback() const noexcept { return !gate_.isEmpty(); }
  /// Kernel id of the thread that runs the cycles; 0 before the first cycle. [any-thread]
  [[nodiscard]] pid_t ioThread() const noexcept { return ioThread_.load(); }
  /// What the session has reported last; none before. [any-thread]
  [[nodiscard]] std::optional<bool> isMemoryLocked() const noexcept;
  /// False while the session reports its device as gone. [any-thread]
  [[nodiscard]] bool alive() const noexcept { return alive_.load(); }

  void cycle(const IoCycle& cycle) noexcept override;
  void overload() noexcept override;
  void aliveChanged(bool alive) noexcept override;
  void formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept override;
  void linksRemoved(const RemovedLinks& removed) override;
  void memoryLocked(bool isLocked) noexcept override;

 private:
  void startSession();
  std::unique_ptr<Session> takeSession();
  void endSession(std::unique_ptr<Session> session);
  void setState(State state);

  const std::shared_ptr<Device> device_;
  const Callback callback_;
  const DeviceInfo actual_;
  BufferView view_;

  CallGate gate_;
  std::atomic<bool> alive_{true};
  std::atomic<pid_t> ioThread_{0};
  enum class Memory { unknown, locked, notLocked };
  std::atomic<Memory> memory_{Memory::unknown};

  mutable std::mutex mutex_;  // never held while the driver is called
  std::condition_variable changed_;
  State state_ = State::idle;
  OSStatus status_ = noErr;
  std::unique_ptr<Session> session_;
};

}  // namespace tolvane::hal
