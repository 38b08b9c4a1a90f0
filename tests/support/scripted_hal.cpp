#include "support/scripted_hal.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tolvane::test {

namespace {

using Bytes = std::vector<std::byte>;

ScriptedHal* current = nullptr;

std::string fourCharacters(UInt32 code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>((code >> shift) & 0xFFU);
  return text;
}

std::string describe(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  return std::to_string(object) + ", " + fourCharacters(address.mSelector) + " " +
         fourCharacters(address.mScope) + " " + std::to_string(address.mElement);
}

std::string describe(AudioDeviceID device, AudioDeviceIOProcID procID) {
  return std::to_string(device) + ", proc " + std::to_string(reinterpret_cast<std::uintptr_t>(procID));
}

template <class T>
Bytes bytesOf(const T& value) {
  Bytes bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

template <class T>
Bytes arrayOf(const std::vector<T>& values) {
  Bytes bytes(values.size() * sizeof(T));
  if (!values.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

/// In the HAL's form: only the header if there are no streams, else the header and the buffers.
Bytes streamConfiguration(const std::vector<UInt32>& streams) {
  Bytes bytes(offsetof(AudioBufferList, mBuffers) + streams.size() * sizeof(AudioBuffer));
  const auto count = static_cast<UInt32>(streams.size());
  std::memcpy(bytes.data(), &count, sizeof count);
  std::byte* next = bytes.data() + offsetof(AudioBufferList, mBuffers);
  for (const UInt32 channels : streams) {
    const AudioBuffer buffer{channels, 0, nullptr};
    std::memcpy(next, &buffer, sizeof buffer);
    next += sizeof buffer;
  }
  return bytes;
}

Bytes bytesOfAll(const std::vector<UInt32>& values) {
  Bytes bytes(values.size() * sizeof(UInt32));
  if (!values.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

std::optional<Bytes> valueOfOneDirection(const ScriptedDevice& device, AudioObjectPropertySelector selector,
                                         bool isInput) {
  switch (selector) {
    case kAudioDevicePropertyStreamConfiguration:
      return streamConfiguration(isInput ? device.inputStreams : device.outputStreams);
    case kTolvaneDevicePropertyRemovedLinks:
      return bytesOfAll(isInput ? device.removedInputs : device.removedOutputs);
    default:
      return std::nullopt;
  }
}

Bytes newString(const std::optional<std::string>& text) {
  const char* const utf8 = text ? text->c_str() : nullptr;
  return bytesOf(CFStringCreateWithCString(nullptr, utf8, kCFStringEncodingUTF8));
}

Bytes deviceList(const std::vector<ScriptedDevice>& devices) {
  Bytes bytes;
  for (const ScriptedDevice& device : devices) {
    const Bytes id = bytesOf(device.id);
    bytes.insert(bytes.end(), id.begin(), id.end());
  }
  return bytes;
}

std::optional<Bytes> globalValue(const ScriptedDevice& device, AudioObjectPropertySelector selector) {
  switch (selector) {
    case kAudioObjectPropertyName:
      return newString(device.name);
    case kAudioDevicePropertyDeviceUID:
      return newString(device.uid);
    case kAudioDevicePropertyNominalSampleRate:
      return bytesOf(device.sampleRate);
    case kAudioDevicePropertyBufferFrameSize:
      return bytesOf(device.bufferFrames);
    case kAudioDevicePropertyBufferFrameSizeRange:
      return bytesOf(device.bufferFramesRange);
    case kAudioDevicePropertyAvailableNominalSampleRates:
      return arrayOf(device.sampleRates);
    case kTolvaneDevicePropertyPeriods:
      return device.periods == 0 ? std::nullopt : std::optional(bytesOf(device.periods));
    case kTolvaneDevicePropertyPeriodsRange:
      return device.periods == 0 ? std::nullopt : std::optional(bytesOf(device.periodsRange));
    case kAudioDevicePropertyDeviceIsAlive:
      return bytesOf(UInt32{device.alive ? 1U : 0U});
    case kAudioDevicePropertyTransportType:
      return bytesOf(device.transport);
    case kAudioDeviceProcessorOverload:
      return bytesOf(UInt32{0});
    case kTolvaneDevicePropertyIOThreadScheduling:
      return device.scheduling ? std::optional(bytesOf(*device.scheduling)) : std::nullopt;
    case kTolvaneDevicePropertyMemoryLocked:
      return device.memoryLocked ? std::optional(bytesOf(UInt32{*device.memoryLocked ? 1U : 0U}))
                                 : std::nullopt;
    default:
      return std::nullopt;
  }
}

/// None for a selector of no channel's text.
std::optional<std::string ScriptedChannel::*> channelText(AudioObjectPropertySelector selector) {
  switch (selector) {
    case kAudioObjectPropertyElementName:
      return &ScriptedChannel::name;
    case kTolvaneDevicePropertyChannelNode:
      return &ScriptedChannel::node;
    case kTolvaneDevicePropertyChannelPort:
      return &ScriptedChannel::port;
    default:
      return std::nullopt;
  }
}

std::optional<Bytes> channelValue(const ScriptedDevice& device, std::string ScriptedChannel::*text,
                                  AudioObjectPropertyScope scope, AudioObjectPropertyElement element) {
  if (scope == kAudioObjectPropertyScopeGlobal || element == 0) return std::nullopt;
  const auto& channels = scope == kAudioObjectPropertyScopeInput ? device.inputs : device.outputs;
  if (element > channels.size() || (channels[element - 1].*text).empty()) return std::nullopt;
  return newString(channels[element - 1].*text);
}

bool isString(AudioObjectPropertySelector selector) {
  return selector == kAudioObjectPropertyName || selector == kAudioDevicePropertyDeviceUID ||
         selector == kTolvanePropertySilentServers || channelText(selector).has_value();
}

void releaseString(const Bytes& value) {
  CFStringRef string = nullptr;
  std::memcpy(&string, value.data(), sizeof string);
  CFRelease(string);
}

}  // namespace

ScriptedHal::ScriptedHal() {
  if (std::exchange(current, this) == nullptr) return;
  std::fputs("scripted HAL: there is one already\n", stderr);
  std::abort();
}

ScriptedHal::~ScriptedHal() {
  current = nullptr;
}

std::vector<std::string> ScriptedHal::takeCalls() {
  return std::exchange(calls_, {});
}

void ScriptedHal::failProperty(HalCall call, AudioObjectID object, AudioObjectPropertySelector selector,
                               AudioObjectPropertyScope scope, OSStatus status, bool writesValue) {
  failures_[{call, {object, selector, scope}}] = {status, writesValue};
}

void ScriptedHal::reportSize(AudioObjectID object, AudioObjectPropertySelector selector,
                             AudioObjectPropertyScope scope, UInt32 bytes) {
  sizes_[{object, selector, scope}] = bytes;
}

void ScriptedHal::answerNext(HalCall call, OSStatus status) {
  statuses_[call].push_back(status);
}

bool ScriptedHal::runCycle(const AudioBufferList* input, AudioBufferList* output) const {
  const auto running = std::find_if(registrations_.begin(), registrations_.end(),
                                    [](const ScriptedRegistration& r) { return r.started; });
  if (running == registrations_.end()) return false;
  const AudioTimeStamp time{};
  running->proc(running->device, &time, input, &time, output, &time, running->clientData);
  return true;
}

std::size_t ScriptedHal::notify(AudioObjectID object, AudioObjectPropertySelector selector,
                                AudioObjectPropertyScope scope) const {
  std::vector<Listener> told;
  const PropertyKey key{object, selector, scope};
  std::copy_if(listeners_.begin(), listeners_.end(), std::back_inserter(told),
               [&key](const Listener& listener) { return listener.key == key; });
  const AudioObjectPropertyAddress address{selector, scope, kAudioObjectPropertyElementMain};
  for (const Listener& listener : told) listener.proc(object, 1, &address, listener.clientData);
  return told.size();
}

OSStatus ScriptedHal::propertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                       bool qualified, UInt32& size) {
  log("AudioObjectGetPropertyDataSize(" + describe(object, address) + (qualified ? ", qualifier)" : ")"));
  const PropertyKey key{object, address.mSelector, address.mScope};
  if (const Failure* failure = failureOf(HalCall::getPropertyDataSize, key)) return failure->status;
  const auto value = valueOf(key, address.mElement);
  if (!value) return kAudioHardwareUnknownPropertyError;
  if (isString(address.mSelector)) releaseString(*value);
  const auto reported = sizes_.find(key);
  size = reported != sizes_.end() ? reported->second : static_cast<UInt32>(value->size());
  return noErr;
}

OSStatus ScriptedHal::propertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                   bool qualified, UInt32& size, void* data) {
  log("AudioObjectGetPropertyData(" + describe(object, address) + ", size " + std::to_string(size) +
      (qualified ? ", qualifier)" : ")"));
  const PropertyKey key{object, address.mSelector, address.mScope};
  const Failure* const failure = failureOf(HalCall::getPropertyData, key);
  if (failure != nullptr && !failure->writesValue) return failure->status;
  const auto value = valueOf(key, address.mElement);
  if (!value) return kAudioHardwareUnknownPropertyError;
  size = std::min(size, static_cast<UInt32>(value->size()));
  std::copy_n(value->data(), size, static_cast<std::byte*>(data));
  return failure != nullptr ? failure->status : noErr;
}

OSStatus ScriptedHal::setPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                      UInt32 size, const void* data) {
  if (object == kAudioObjectSystemObject && address.mSelector == kTolvanePropertyClaim) {
    const std::string uid(static_cast<const char*>(data), size);
    log("AudioObjectSetPropertyData(" + describe(object, address) + ", " + uid + ")");
    return onClaim ? onClaim(uid) : OSStatus{kAudioHardwareBadDeviceError};
  }
  const bool isRate = address.mSelector == kAudioDevicePropertyNominalSampleRate;
  UInt32 count = 0;
  Float64 rate = 0.0;
  if (size != (isRate ? sizeof rate : sizeof count)) return kAudioHardwareBadPropertySizeError;
  std::memcpy(isRate ? static_cast<void*>(&rate) : &count, data, size);
  const std::string text = std::to_string(isRate ? static_cast<UInt32>(rate) : count);
  log("AudioObjectSetPropertyData(" + describe(object, address) + ", " + text + ")");
  const OSStatus status = nextStatus(HalCall::setPropertyData);
  if (status != noErr) return status;
  const auto device = std::find_if(devices.begin(), devices.end(),
                                   [object](const ScriptedDevice& d) { return d.id == object; });
  if (device == devices.end()) return kAudioHardwareBadObjectError;
  switch (address.mSelector) {
    case kAudioDevicePropertyNominalSampleRate:
      device->sampleRate = rate;
      return noErr;
    case kAudioDevicePropertyBufferFrameSize:
      device->bufferFrames = count;
      return noErr;
    case kTolvaneDevicePropertyPeriods:
      device->periods = count;
      return noErr;
    default:
      return kAudioHardwareUnsupportedOperationError;
  }
}

OSStatus ScriptedHal::addListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                  AudioObjectPropertyListenerProc listener, void* clientData) {
  log("AudioObjectAddPropertyListener(" + describe(object, address) + ")");
  const Listener added{{object, address.mSelector, address.mScope}, listener, clientData};
  if (std::find(listeners_.begin(), listeners_.end(), added) == listeners_.end()) listeners_.push_back(added);
  return nextStatus(HalCall::addPropertyListener);
}

OSStatus ScriptedHal::removeListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                     AudioObjectPropertyListenerProc listener, void* clientData) {
  log("AudioObjectRemovePropertyListener(" + describe(object, address) + ")");
  std::erase(listeners_, Listener{{object, address.mSelector, address.mScope}, listener, clientData});
  return nextStatus(HalCall::removePropertyListener);
}

OSStatus ScriptedHal::create(AudioDeviceID device, AudioDeviceIOProc proc, void* clientData,
                             AudioDeviceIOProcID& procID) {
  log("AudioDeviceCreateIOProcID(" + std::to_string(device) + ")");
  const OSStatus status = nextStatus(HalCall::createIOProcID);
  if (status != noErr || std::exchange(withholdsProcID_, false)) return status;
  registrations_.push_back({++lastProcNumber_, device, proc, clientData});
  procID = reinterpret_cast<AudioDeviceIOProcID>(lastProcNumber_);
  return noErr;
}

OSStatus ScriptedHal::start(AudioDeviceID device, AudioDeviceIOProcID procID) {
  log("AudioDeviceStart(" + describe(device, procID) + ")");
  ScriptedRegistration* const registration = find(device, procID);
  if (registration == nullptr) return kAudioHardwareBadDeviceError;
  const OSStatus status = nextStatus(HalCall::start);
  registration->started = status == noErr;
  return status;
}

OSStatus ScriptedHal::stop(AudioDeviceID device, AudioDeviceIOProcID procID) {
  log("AudioDeviceStop(" + describe(device, procID) + ")");
  ScriptedRegistration* const registration = find(device, procID);
  if (registration == nullptr) return kAudioHardwareBadDeviceError;
  registration->started = false;
  return nextStatus(HalCall::stop);
}

OSStatus ScriptedHal::destroy(AudioDeviceID device, AudioDeviceIOProcID procID) {
  log("AudioDeviceDestroyIOProcID(" + describe(device, procID) + ")");
  const ScriptedRegistration* const registration = find(device, procID);
  if (registration == nullptr) return kAudioHardwareBadDeviceError;
  registrations_.erase(registrations_.begin() + (registration - registrations_.data()));
  return nextStatus(HalCall::destroyIOProcID);
}

void ScriptedHal::log(const std::string& text) {
  calls_.push_back(text);
  if (onCall) onCall(text);
}

OSStatus ScriptedHal::nextStatus(HalCall call) {
  std::vector<OSStatus>& queue = statuses_[call];
  if (queue.empty()) return noErr;
  const OSStatus status = queue.front();
  queue.erase(queue.begin());
  return status;
}

const ScriptedHal::Failure* ScriptedHal::failureOf(HalCall call, const PropertyKey& key) const {
  const auto failure = failures_.find({call, key});
  return failure != failures_.end() ? &failure->second : nullptr;
}

std::optional<Bytes> ScriptedHal::valueOf(const PropertyKey& key, AudioObjectPropertyElement element) const {
  const auto [object, selector, scope] = key;
  if (object == kAudioObjectSystemObject) {
    if (selector == kTolvanePropertySilentServers) return newString(silentServers);
    if (selector != kAudioHardwarePropertyDevices) return std::nullopt;
    return deviceList(devices);
  }
  const AudioObjectID id = object;
  const auto device =
      std::find_if(devices.begin(), devices.end(), [id](const ScriptedDevice& d) { return d.id == id; });
  if (device == devices.end()) return std::nullopt;
  if (const auto text = channelText(selector)) return channelValue(*device, *text, scope, element);
  const bool isDirected =
      selector == kAudioDevicePropertyStreamConfiguration || selector == kTolvaneDevicePropertyRemovedLinks;
  if (!isDirected) return globalValue(*device, selector);
  const bool isInput = scope == kAudioObjectPropertyScopeInput;
  if (!isInput && scope != kAudioObjectPropertyScopeOutput) return std::nullopt;
  return valueOfOneDirection(*device, selector, isInput);
}

ScriptedRegistration* ScriptedHal::find(AudioDeviceID device, AudioDeviceIOProcID procID) {
  const auto number = reinterpret_cast<std::uintptr_t>(procID);
  const auto found =
      std::find_if(registrations_.begin(), registrations_.end(),
                   [&](const ScriptedRegistration& r) { return r.number == number && r.device == device; });
  return found != registrations_.end() ? &*found : nullptr;
}

}  // namespace tolvane::test

using tolvane::test::current;

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierDataSize, const void* qualifierData,
                                        UInt32* dataSize) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  const bool qualified = qualifierDataSize != 0 || qualifierData != nullptr;
  return current->propertyDataSize(object, *address, qualified, *dataSize);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierDataSize, const void* qualifierData, UInt32* dataSize,
                                    void* data) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  const bool qualified = qualifierDataSize != 0 || qualifierData != nullptr;
  return current->propertyData(object, *address, qualified, *dataSize, data);
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 /*qualifierDataSize*/, const void* /*qualifierData*/,
                                    UInt32 dataSize, const void* data) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  return current->setPropertyData(object, *address, dataSize, data);
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc listener, void* clientData) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  return current->addListener(object, *address, listener, clientData);
}

OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc listener, void* clientData) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  return current->removeListener(object, *address, listener, clientData);
}

OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void* clientData,
                                   AudioDeviceIOProcID* procID) {
  if (current == nullptr) return kAudioHardwareNotReadyError;
  return current->create(device, proc, clientData, *procID);
}

OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID) {
  return current != nullptr ? current->start(device, procID) : kAudioHardwareNotReadyError;
}

OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID) {
  return current != nullptr ? current->stop(device, procID) : kAudioHardwareNotReadyError;
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID) {
  return current != nullptr ? current->destroy(device, procID) : kAudioHardwareNotReadyError;
}

}  // extern "C"
