// What a driver is to the HAL, and what the HAL is to a driver's running session.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// The buffers and times of one IO cycle. The lists belong to the driver and hold for the call alone.
struct IoCycle {
  const AudioTimeStamp* now;
  const AudioBufferList* input;
  const AudioTimeStamp* inputTime;
  AudioBufferList* output;
  const AudioTimeStamp* outputTime;
};

/// The HAL's side of a running session. It outlives the session. Every operation is wait-free.
class SessionClient {
 public:
  virtual ~SessionClient() = default;

  /// Runs the callback: exactly once a cycle, never twice at a time. Both lists have one buffer a stream, in
  /// the streams' order as the device was started with; a stream without data this cycle has a null `mData`
  /// and still its number of channels and of bytes. The frame count may change from cycle to cycle.
  /// [io-thread]
  virtual void cycle(const IoCycle& cycle) noexcept = 0;

  /// One missed deadline or server xrun. [any-thread]
  virtual void overload() noexcept = 0;

  /// The device stopped or resumed being there. Repeating a state is harmless. A session that has said false
  /// is ended, and another one started in its place, when the driver has listed the device again for a fifth
  /// of a second, unless it has said true before that. [any-thread]
  virtual void aliveChanged(bool alive) noexcept = 0;

  /// The device's sample rate or cycle length is now this. [any-thread]
  virtual void formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept = 0;
};

/// A callback being called by a device.
class Session {
 public:
  /// Stops: when it has returned the client is called no more. It should return within half a second whatever
  /// state the server is in; the HAL leaves it behind on a thread of its own when it does not. [not-io]
  virtual ~Session() = default;
};

/// Either a session, or the status that AudioDeviceStart is to return.
struct StartResult {
  OSStatus status = noErr;
  std::unique_ptr<Session> session;
};

class Driver;

/// The HAL's side of a driver that tells of its devices' coming and going.
class DeviceObserver {
 public:
  virtual ~DeviceObserver() = default;

  /// What `driver.devices()` answers has changed. Returns at once and calls nothing of the driver's, so that
  /// it may be called with locks of the driver held. [not-io]
  virtual void devicesChanged(Driver& driver) noexcept = 0;
};

/// One sound system. A driver lives as long as the process. The HAL calls devices() once at a time, on a
/// thread that it keeps for that; starts and ends of sessions and setBufferFrames() may come on any other
/// thread at the same time. Every operation but name() may throw std::bad_alloc or std::system_error where
/// the system has no memory, thread or descriptor left: the call that needed it then fails.
class Driver {
 public:
  virtual ~Driver() = default;

  /// The driver's name in messages: "jack". [any-thread]
  [[nodiscard]] virtual const char* name() const noexcept = 0;

  /// The devices that are there now, in menu order; empty when the sound system is not there. Answers within
  /// 150 ms: a driver that does not is left out of the list until it has answered. [not-io]
  virtual std::vector<DeviceInfo> devices() = 0;

  /// The last devices() is no answer: the sound server has taken the connection and has said nothing yet. The
  /// HAL then calls devices() again until it is an answer, which counts as one long call. Called after
  /// devices(), on its thread. [not-io]
  [[nodiscard]] virtual bool awaitsServer() const { return false; }

  /// The sound server that this driver reaches, where another driver may reach the same one: "pipewire"; else
  /// empty. It is the same at any time. Of two drivers for one server the first alone is used: nothing else
  /// of the other is ever called. [not-io]
  [[nodiscard]] virtual std::string server() const { return {}; }

  /// Starts calling `client` with the buffers of `device`, a value that devices() gave, in its stream layout.
  /// Errors: those of AudioDeviceStart. [not-io]
  virtual StartResult start(const DeviceInfo& device, SessionClient& client) = 0;

  /// Takes whom to tell of changes from now on; called once, before the first devices(), and the observer
  /// lives as long as the process. False from a driver that tells of nothing: it is asked for its devices
  /// every half second while one that was lost is waited for. [not-io]
  virtual bool setObserver(DeviceObserver& /*observer*/) { return false; }

  /// Makes `frames`, within the device's range, its frames a cycle; a running session tells of the change by
  /// formatChanged(). Errors: kAudioHardwareUnsupportedOperationError (not with this device, or not now);
  /// those of AudioDeviceStart. [not-io]
  virtual OSStatus setBufferFrames(const DeviceInfo& /*device*/, std::uint32_t /*frames*/) {
    return kAudioHardwareUnsupportedOperationError;
  }
};

}  // namespace tolvane::hal
