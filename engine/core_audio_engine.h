#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "core/io_proc.h"
#include "core/patch_connection.h"
#include "core/routing_context.h"
#include "engine/audio_device_info.h"
#include "engine/engine_error.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Owns the running audio path: the routing context and the callback's registration on one device. It is idle
/// (no context, no registration) or running (both); nothing else is seen between calls. It does nothing when
/// it is destroyed, so that a running callback keeps its context: whoever makes one other than the shared one
/// stops it first.
///
/// Everything here is [main-thread] and synchronous.
class CoreAudioEngine {
 public:
  /// The one engine of the window, made on first use, never destroyed.
  static CoreAudioEngine& shared();

  /// `ioProc` is the callback to register; it is called with the IOProcContext as its client data. A caller
  /// that gives its own (to measure around the routing) calls halIOProc from it.
  explicit CoreAudioEngine(AudioDeviceIOProc ioProc = &halIOProc) noexcept;
  CoreAudioEngine(const CoreAudioEngine&) = delete;
  CoreAudioEngine& operator=(const CoreAudioEngine&) = delete;
  ~CoreAudioEngine() = default;

  /// The devices that have a channel, in the HAL's order; empty on every failure.
  [[nodiscard]] std::vector<AudioDeviceInfo> getAllDevices() const;

  /// The device's channels in one direction, over all its streams; 0 on every failure.
  [[nodiscard]] std::int64_t channelCount(AudioDeviceID device, bool input) const;

  /// Stops what runs, then routes on `deviceID` with the active ones of `connections`. None when it runs; the
  /// error when it does not, and the engine is then idle. Traces each step to standard output.
  [[nodiscard]] std::optional<EngineError> start(AudioDeviceID deviceID,
                                                 std::span<const PatchConnection> connections);

  /// Stops the device, unregisters the callback, frees the context, in this order. Does nothing when idle.
  void stop() noexcept;

  /// Publishes a route list into a context: see core/routing_context.h.
  void writeConnections(IOProcContext* to, std::span<const PatchConnection> connections) const;

  [[nodiscard]] IOProcContext* contextPtr() const noexcept { return contextPtr_; }
  [[nodiscard]] AudioDeviceIOProcID procID() const noexcept { return procID_; }
  /// The device of the last start, also of a failed one; 0 before the first.
  [[nodiscard]] AudioDeviceID currentDeviceID() const noexcept { return currentDeviceID_; }
  [[nodiscard]] bool isRunning() const noexcept { return isRunning_; }

 private:
  void freeContext() noexcept;

  AudioDeviceIOProc ioProc_;
  IOProcContext* contextPtr_ = nullptr;  // owned, from a successful start to the next stop
  AudioDeviceIOProcID procID_ = nullptr;
  AudioDeviceID currentDeviceID_ = kAudioObjectUnknown;
  bool isRunning_ = false;
};

}  // namespace tolvane
