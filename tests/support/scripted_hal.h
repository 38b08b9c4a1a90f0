// The HAL's C surface under a test's control. A test program links it instead of the HAL; the functions
// answer from the one ScriptedHal that is alive, and refuse everything when none is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "hal/core_audio.h"

namespace tolvane::test {

/// One device, as its properties report it.
struct ScriptedDevice {
  AudioDeviceID id = kAudioObjectUnknown;
  std::optional<std::string> name = std::nullopt;  // none: the query succeeds and hands out a null reference
  std::vector<UInt32> inputStreams = {};           // channels of each input stream
  std::vector<UInt32> outputStreams = {};          // channels of each output stream
  std::string uid = {};
  Float64 sampleRate = 48000.0;
  UInt32 bufferFrames = 512;
  AudioValueRange bufferFramesRange = {512.0, 512.0};
  bool alive = true;
  UInt32 transport = kAudioDeviceTransportTypeVirtual;
  std::optional<TolvaneThreadScheduling> scheduling = std::nullopt;  // none: no such property
};

enum class HalCall {
  getPropertyDataSize,
  getPropertyData,
  setPropertyData,
  addPropertyListener,
  removePropertyListener,
  createIOProcID,
  start,
  stop,
  destroyIOProcID,
};

/// A callback that was registered and not destroyed since.
struct ScriptedRegistration {
  std::uintptr_t number;  // the identifier handed out, 1 for the first of the ScriptedHal's life
  AudioDeviceID device;
  AudioDeviceIOProc proc;
  void* clientData;
  bool started = false;
};

/// [main-thread] as a whole. One at a time.
class ScriptedHal {
 public:
  ScriptedHal();
  ~ScriptedHal();
  ScriptedHal(const ScriptedHal&) = delete;
  ScriptedHal& operator=(const ScriptedHal&) = delete;

  /// What 'dev#' lists, in this order. May change at any time, also from `onCall`.
  std::vector<ScriptedDevice> devices;

  /// What 'slnt' says. May change as the devices may.
  std::string silentServers;

  /// Runs in each call after it was logged and before it is answered, with the call's text.
  std::function<void(const std::string& text)> onCall;

  /// The calls so far, in order, as texts:
  ///   AudioObjectGetPropertyDataSize(1, dev# glob 0)
  ///   AudioObjectGetPropertyData(1, dev# glob 0, size 8)
  ///   AudioObjectSetPropertyData(7, fsiz glob 0, 256), which sets the device's frames a cycle and nothing
  ///   else AudioObjectAddPropertyListener(7, livn glob 0), AudioObjectRemovePropertyListener(7, livn glob 0)
  ///   AudioDeviceCreateIOProcID(7), AudioDeviceStart(7, proc 1), AudioDeviceStop(7, proc 1),
  ///   AudioDeviceDestroyIOProcID(7, proc 1)
  /// A property query that passes a qualifier ends in ", qualifier" before the parenthesis.
  [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
  /// The calls so far, and forgets them.
  std::vector<std::string> takeCalls();

  /// Makes every query of the property fail with the status. A data query writes the value all the same when
  /// `writesValue` is set, as a HAL may that fails half way.
  void failProperty(HalCall call, AudioObjectID object, AudioObjectPropertySelector selector,
                    AudioObjectPropertyScope scope, OSStatus status, bool writesValue = false);
  /// Makes the size query of the property say `bytes`, whatever its value takes.
  void reportSize(AudioObjectID object, AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
                  UInt32 bytes);
  /// Lines up the status of a coming set, create, start, stop or destroy; with none lined up the call
  /// succeeds. A stop or destroy that is to fail takes effect all the same.
  void answerNext(HalCall call, OSStatus status);
  /// Makes the next registration succeed without handing out an identifier.
  void withholdNextProcID() { withholdsProcID_ = true; }

  [[nodiscard]] const std::vector<ScriptedRegistration>& registrations() const { return registrations_; }
  /// Calls the callback that is started, once, as a device would. Nothing, and false, when none is.
  bool runCycle(const AudioBufferList* input, AudioBufferList* output) const;
  /// Calls the listeners of the property, on this thread; returns how many there are.
  std::size_t notify(AudioObjectID object, AudioObjectPropertySelector selector,
                     AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal) const;

  // What the C functions of the surface are made of. For them alone.
  OSStatus propertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress& address, bool qualified,
                            UInt32& size);
  OSStatus propertyData(AudioObjectID object, const AudioObjectPropertyAddress& address, bool qualified,
                        UInt32& size, void* data);
  OSStatus setPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address, UInt32 size,
                           const void* data);
  OSStatus addListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                       AudioObjectPropertyListenerProc listener, void* clientData);
  OSStatus removeListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                          AudioObjectPropertyListenerProc listener, void* clientData);
  OSStatus create(AudioDeviceID device, AudioDeviceIOProc proc, void* clientData,
                  AudioDeviceIOProcID& procID);
  OSStatus start(AudioDeviceID device, AudioDeviceIOProcID procID);
  OSStatus stop(AudioDeviceID device, AudioDeviceIOProcID procID);
  OSStatus destroy(AudioDeviceID device, AudioDeviceIOProcID procID);

 private:
  using PropertyKey = std::tuple<AudioObjectID, AudioObjectPropertySelector, AudioObjectPropertyScope>;
  struct Failure {
    OSStatus status;
    bool writesValue;
  };
  struct Listener {
    PropertyKey key;
    AudioObjectPropertyListenerProc proc;
    void* clientData;
    bool operator==(const Listener&) const = default;
  };

  void log(const std::string& text);
  OSStatus nextStatus(HalCall call);
  [[nodiscard]] const Failure* failureOf(HalCall call, const PropertyKey& key) const;
  /// The property's value as bytes; none when the object has no such property. A string is a new reference.
  [[nodiscard]] std::optional<std::vector<std::byte>> valueOf(const PropertyKey& key) const;
  ScriptedRegistration* find(AudioDeviceID device, AudioDeviceIOProcID procID);

  std::vector<std::string> calls_;
  std::map<std::pair<HalCall, PropertyKey>, Failure> failures_;
  std::map<PropertyKey, UInt32> sizes_;
  std::map<HalCall, std::vector<OSStatus>> statuses_;
  std::vector<ScriptedRegistration> registrations_;
  std::vector<Listener> listeners_;
  std::uintptr_t lastProcNumber_ = 0;
  bool withholdsProcID_ = false;
};

/// String references handed out or created, and not released yet. The process ends when one too many is
/// released.
[[nodiscard]] int liveStringReferences();

}  // namespace tolvane::test
