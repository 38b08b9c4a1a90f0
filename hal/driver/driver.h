// The interfaces between the HAL, its drivers and their running sessions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/surface/rehearsal.h"

namespace tolvane::hal {

/// The buffers and times of one IO cycle. The driver owns the lists; they are valid only during the call.
struct IoCycle {
  const AudioTimeStamp* now;
  const AudioBufferList* input;
  const AudioTimeStamp* inputTime;
  AudioBufferList* output;
  const AudioTimeStamp* outputTime;
};

/// Channels of a session, counted from 0 over all streams of a direction. Both lists are ascending.
struct RemovedLinks {
  std::vector<UInt32> inputs = {};
  std::vector<UInt32> outputs = {};

  bool operator==(const RemovedLinks&) const = default;
};

/// The HAL's side of a running session. It outlives the session. Every operation but linksRemoved() is
/// wait-free.
class SessionClient {
 public:
  virtual ~SessionClient() = default;

  /// Runs the callback. Called exactly once per cycle, never concurrently. Both lists have one buffer per
  /// stream, in the order that the device was started with. A stream without data in this cycle has a null
  /// `mData` but keeps its number of channels and of bytes. The frame count may change from cycle to cycle.
  /// [io-thread]
  virtual void cycle(const IoCycle& cycle) noexcept = 0;

  /// One missed deadline or server xrun. [any-thread]
  virtual void overload() noexcept = 0;

  /// The device is gone, or is back. Repeating a state is harmless. After false, the HAL waits until the
  /// driver has listed the device again for 200 ms. Unless the session has reported true by then, the HAL
  /// ends it and starts another one in its place. [any-thread]
  virtual void aliveChanged(bool alive) noexcept = 0;

  /// The device now has this sample rate and this buffer size. [any-thread]
  virtual void formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept = 0;

  /// Somebody else has removed links between our channels and the device, which is still there. `removed` is
  /// all that are removed now. The driver does not make them again in this session until the device has been
  /// away; it then reports them as no longer removed. [not-io]
  virtual void linksRemoved(const RemovedLinks& /*removed*/) {}

  /// Whether the system may page out memory of the session that its cycles use: samples and the stack of the
  /// IO thread. A session that does not know reports nothing. [any-thread]
  virtual void memoryLocked(bool /*isLocked*/) noexcept {}
};

/// A running session: the device calls its client until the session is destroyed.
class Session {
 public:
  /// Stops the session. After the return the client is not called again. Should return within
  /// kOutgoingLimit (hal/driver/time_limits.h), whatever state the server is in; if it does not, the HAL
  /// leaves it behind on a thread of its own. [not-io]
  virtual ~Session() = default;
};

/// Either a session, or the status that AudioDeviceStart returns.
struct StartResult {
  OSStatus status = noErr;
  std::unique_ptr<Session> session;
};

class Driver;

/// Receives reports of devices that come and go. The HAL implements it.
class DeviceObserver {
 public:
  virtual ~DeviceObserver() = default;

  /// The result of `driver.devices()` has changed. Returns at once and does not call the driver, so the
  /// driver may hold its locks. [not-io]
  virtual void devicesChanged(Driver& driver) noexcept = 0;
};

/// One sound system. A driver lives as long as the process. The HAL calls devices() on one thread that it
/// keeps for this, one call at a time. Other threads may start and end sessions and change settings at the
/// same time. Every operation but name() may throw std::bad_alloc or std::system_error if the system has
/// no memory, thread or descriptor left; the call that needed it then fails.
class Driver {
 public:
  virtual ~Driver() = default;

  /// The driver's name in messages: "jack". [any-thread]
  [[nodiscard]] virtual const char* name() const noexcept = 0;

  /// The devices present now, in menu order; empty if the sound system is absent. The list leaves out a
  /// driver that does not answer within kListLimit, until it has answered. [not-io]
  virtual std::vector<DeviceInfo> devices() = 0;

  /// True if the last result of devices() is no answer, because the sound server has accepted the connection
  /// but has not responded yet. The HAL then repeats devices() until there is an answer, and counts this as
  /// one long call. Called after devices(), on its thread. [not-io]
  [[nodiscard]] virtual bool awaitsServer() const { return false; }

  /// The name of the sound server that this driver reaches, for example "pipewire", if another driver may
  /// reach the same one; else empty. Always returns the same name. Of two drivers for one server the HAL uses
  /// only the first; it calls nothing else of the second. [not-io]
  [[nodiscard]] virtual std::string server() const { return {}; }

  /// A sentence for the user if what is installed keeps the driver from its work; else empty. Always the
  /// same. [not-io]
  [[nodiscard]] virtual std::string problem() const { return {}; }

  /// Starts calling `client` with the buffers of `device`, in its stream layout. `device` is a value that
  /// devices() returned. Errors: those of AudioDeviceStart. [not-io]
  virtual StartResult start(const DeviceInfo& device, SessionClient& client) = 0;

  /// Sets the observer, which the driver tells of changes from now on. Called once, before the first
  /// devices(). The observer lives as long as the process. A driver that reports no changes ignores it;
  /// its devices are then found only by asking, every 500 ms while a lost one is awaited. [not-io]
  virtual void setObserver(DeviceObserver& /*observer*/) {}

  /// Sets the device's buffer size to `frames`, which is within its range. A running session reports the
  /// change through formatChanged(). Errors: kAudioHardwareUnsupportedOperationError (not with this device,
  /// or not now); those of AudioDeviceStart. [not-io]
  virtual OSStatus setBufferFrames(const DeviceInfo& /*device*/, std::uint32_t /*frames*/) {
    return kAudioHardwareUnsupportedOperationError;
  }

  /// Sets the device's sample rate to one of its list, or the number of buffers that the hardware holds,
  /// within its range. At another rate the device may have other channels. Errors: as setBufferFrames().
  /// [not-io]
  virtual OSStatus setSampleRate(const DeviceInfo& /*device*/, double /*rateHz*/) {
    return kAudioHardwareUnsupportedOperationError;
  }
  virtual OSStatus setPeriods(const DeviceInfo& /*device*/, std::uint32_t /*periods*/) {
    return kAudioHardwareUnsupportedOperationError;
  }

  /// Asks the sound server that uses `card`, which devices() returned as held, to release it. The driver then
  /// lists the card for the rest of its life, even if a server takes it again. Errors:
  /// kAudioDevicePermissionsError (the server keeps it), kAudioHardwareUnsupportedOperationError (nobody can
  /// be asked), kAudioHardwareBadDeviceError (the card has gone). [not-io]
  virtual OSStatus claim(const DeviceInfo& /*card*/) { return kAudioHardwareUnsupportedOperationError; }

  /// Sets how the device runs from its next start on. Error: kAudioHardwareUnsupportedOperationError (it is
  /// no device without hardware). Returns at once. [not-io]
  virtual OSStatus setRehearsal(const DeviceInfo& /*device*/, const TolvaneRehearsal& /*rehearsal*/) {
    return kAudioHardwareUnsupportedOperationError;
  }
};

}  // namespace tolvane::hal
