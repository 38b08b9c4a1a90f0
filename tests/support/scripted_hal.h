// The HAL's C functions under a test's control. A test program links this instead of the HAL. The functions
// answer from the one ScriptedHal that exists, and fail if there is none.
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

/// The texts of one channel.
struct ScriptedChannel {
  std::string name = {};
  std::string node = {};
  std::string port = {};
};

/// One device, as its properties report it.
struct ScriptedDevice {
  AudioDeviceID id = kAudioObjectUnknown;
  std::optional<std::string> name = std::nullopt;  // none: the query succeeds and returns a null reference
  std::vector<UInt32> inputStreams = {};           // channels of each input stream
  std::vector<UInt32> outputStreams = {};          // channels of each output stream
  std::string uid = {};
  Float64 sampleRate = 48000.0;
  UInt32 bufferFrames = 512;
  AudioValueRange bufferFramesRange = {512.0, 512.0};
  std::vector<AudioValueRange> sampleRates = {{48000.0, 48000.0}};
  UInt32 periods = 0;  // 0: no such properties
  AudioValueRange periodsRange = {0.0, 0.0};
  bool alive = true;
  UInt32 transport = kAudioDeviceTransportTypeVirtual;
  std::optional<TolvaneThreadScheduling> scheduling = std::nullopt;  // none: no such property
  std::optional<bool> memoryLocked = std::nullopt;                   // likewise
  std::vector<UInt32> removedInputs = {};                            // channels whose links are removed
  std::vector<UInt32> removedOutputs = {};
  // The texts of the first channels; an empty one is no such property.
  std::vector<ScriptedChannel> inputs = {};
  std::vector<ScriptedChannel> outputs = {};
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

/// A callback that is registered and not yet destroyed.
struct ScriptedRegistration {
  std::uintptr_t number;  // the identifier handed out; a ScriptedHal counts from 1
  AudioDeviceID device;
  AudioDeviceIOProc proc;
  void* clientData;
  bool started = false;
};

/// The scripted HAL. At most one may exist at a time. [main-thread]
class ScriptedHal {
 public:
  ScriptedHal();
  ~ScriptedHal();
  ScriptedHal(const ScriptedHal&) = delete;
  ScriptedHal& operator=(const ScriptedHal&) = delete;

  /// The device list ('dev#'), in this order. May change at any time, also from `onCall`.
  std::vector<ScriptedDevice> devices;

  /// The silent servers ('slnt'). May change at any time, also from `onCall`.
  std::string silentServers;

  /// Answers a claim ('clam') of this uid. None: no sound server has a card.
  std::function<OSStatus(const std::string& uid)> onClaim;

  /// Runs in each call, with the call's text, after the call is logged and before it is answered.
  std::function<void(const std::string& text)> onCall;

  /// The calls so far, in order, as texts:
  ///   AudioObjectGetPropertyDataSize(1, dev# glob 0)
  ///   AudioObjectGetPropertyData(1, dev# glob 0, size 8)
  ///   AudioObjectSetPropertyData(7, fsiz glob 0, 256)
  ///   AudioObjectSetPropertyData(1, clam glob 0, alsa:Card)
  ///   AudioObjectAddPropertyListener(7, livn glob 0)
  ///   AudioObjectRemovePropertyListener(7, livn glob 0)
  ///   AudioDeviceCreateIOProcID(7)
  ///   AudioDeviceStart(7, proc 1)
  ///   AudioDeviceStop(7, proc 1)
  ///   AudioDeviceDestroyIOProcID(7, proc 1)
  /// AudioObjectSetPropertyData can set only the device's buffer size in frames, its sample rate and its
  /// periods, and claim a card. The text of a property query with a qualifier ends in ", qualifier" before
  /// the parenthesis.
  [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
  /// Returns the calls so far and clears them.
  std::vector<std::string> takeCalls();

  /// Makes every such query of the property fail with the status. With `writesValue`, a data query writes the
  /// value nevertheless, like a HAL that fails halfway.
  void failProperty(HalCall call, AudioObjectID object, AudioObjectPropertySelector selector,
                    AudioObjectPropertyScope scope, OSStatus status, bool writesValue = false);
  /// Makes the size query of the property return `bytes`, regardless of the value's size.
  void reportSize(AudioObjectID object, AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
                  UInt32 bytes);
  /// Queues the status for one later call other than a property query; with none queued, the call succeeds. A
  /// stop or destroy that fails this way still takes effect.
  void answerNext(HalCall call, OSStatus status);
  /// Makes the next registration succeed without returning an identifier.
  void withholdNextProcID() { withholdsProcID_ = true; }

  [[nodiscard]] const std::vector<ScriptedRegistration>& registrations() const { return registrations_; }
  /// Calls the started callback once, like a device. Returns false if none is started.
  bool runCycle(const AudioBufferList* input, AudioBufferList* output) const;
  /// Calls the property's listeners on this thread and returns their number.
  std::size_t notify(AudioObjectID object, AudioObjectPropertySelector selector,
                     AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal) const;

  // Only for the C functions of the surface, which call these.
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
  /// The property's value as bytes; none if the object has no such property. A string is a new reference.
  [[nodiscard]] std::optional<std::vector<std::byte>> valueOf(const PropertyKey& key,
                                                              AudioObjectPropertyElement element) const;
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

/// The number of string references returned or created and not yet released. Releasing one too many ends the
/// process.
[[nodiscard]] int liveStringReferences();

}  // namespace tolvane::test
