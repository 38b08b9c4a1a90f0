#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "core/patch/patch_connection.h"
#include "core/routing/io_proc.h"
#include "core/routing/routing_context.h"
#include "engine/audio_device_info.h"
#include "engine/engine_error.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Owns the running audio path: the routing context and the callback's registration on one device. The engine
/// is idle (neither exists) or running (both exist); between calls there is no other state. The destructor
/// does nothing, so that a running callback keeps its context. Stop any engine but the shared one before
/// destroying it.
///
/// Everything here is [main-thread] and synchronous.
class CoreAudioEngine {
 public:
  /// The window's engine. Made on first use, never destroyed.
  static CoreAudioEngine& shared();

  /// `ioProc` is the callback to register. Its client data is the IOProcContext. A caller's own callback, for
  /// example one that measures the routing, calls halIOProc.
  explicit CoreAudioEngine(AudioDeviceIOProc ioProc = &halIOProc) noexcept;
  CoreAudioEngine(const CoreAudioEngine&) = delete;
  CoreAudioEngine& operator=(const CoreAudioEngine&) = delete;
  ~CoreAudioEngine() = default;

  /// The devices with at least one channel, in the HAL's order; empty on any failure.
  [[nodiscard]] std::vector<AudioDeviceInfo> getAllDevices() const;

  /// The device's channel count in one direction, over all its streams; 0 on any failure.
  [[nodiscard]] std::int64_t channelCount(AudioDeviceID device, bool input) const;

  /// Stops the current device, then starts routing on `deviceID` with the active routes of `connections`.
  /// Returns none if the device runs. On an error the engine is idle. Traces each step to standard output.
  [[nodiscard]] std::optional<EngineError> start(AudioDeviceID deviceID,
                                                 std::span<const PatchConnection> connections);

  /// Stops the device, unregisters the callback and frees the context, in this order. Does nothing if idle.
  void stop() noexcept;

  /// Publishes a route list into a context: see core/routing/routing_context.h.
  void writeConnections(IOProcContext* to, std::span<const PatchConnection> connections) const;

  [[nodiscard]] IOProcContext* contextPtr() const noexcept { return contextPtr_; }
  [[nodiscard]] AudioDeviceIOProcID procID() const noexcept { return procID_; }
  /// The device of the last start, even if that failed; 0 before the first.
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
