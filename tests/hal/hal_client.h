// Short forms of the HAL's C functions for tests: values in, values out.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "hal/core_audio.h"
#include "support/eventually.h"

namespace tolvane::test {

inline AudioObjectPropertyAddress address(AudioObjectPropertySelector selector,
                                          AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal) {
  return {selector, scope, kAudioObjectPropertyElementMain};
}

inline std::vector<AudioObjectID> deviceList() {
  const auto list = address(kAudioHardwarePropertyDevices);
  UInt32 size = 0;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &list, 0, nullptr, &size), noErr);
  std::vector<AudioObjectID> ids(size / sizeof(AudioObjectID) + 1);
  size = static_cast<UInt32>(ids.size() * sizeof(AudioObjectID));
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, ids.data()),
            noErr);
  ids.resize(size / sizeof(AudioObjectID));
  return ids;
}

template <typename Value>
Value valueOf(AudioObjectID object, AudioObjectPropertySelector selector) {
  const auto where = address(selector);
  Value value{};
  UInt32 size = sizeof value;
  EXPECT_EQ(AudioObjectGetPropertyData(object, &where, 0, nullptr, &size, &value), noErr);
  EXPECT_EQ(size, sizeof value);
  return value;
}

inline std::string textOf(CFStringRef string) {
  char text[256] = "";
  EXPECT_NE(CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8), 0);
  return text;
}

inline std::string stringOf(AudioObjectID object, AudioObjectPropertySelector selector) {
  const auto* const string = static_cast<CFStringRef>(valueOf<CFTypeRef>(object, selector));
  std::string text = textOf(string);
  CFRelease(string);
  return text;
}

/// The channels of each stream.
inline std::vector<UInt32> streamsOf(AudioObjectID device, AudioObjectPropertyScope scope) {
  const auto where = address(kAudioDevicePropertyStreamConfiguration, scope);
  UInt32 size = 0;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(device, &where, 0, nullptr, &size), noErr);
  std::vector<std::byte> bytes(size + sizeof(AudioBufferList));
  UInt32 room = size;
  EXPECT_EQ(AudioObjectGetPropertyData(device, &where, 0, nullptr, &room, bytes.data()), noErr);
  EXPECT_EQ(room, size);
  const auto* const list = reinterpret_cast<const AudioBufferList*>(bytes.data());
  std::vector<UInt32> streams;
  for (UInt32 b = 0; b < list->mNumberBuffers; ++b) streams.push_back(list->mBuffers[b].mNumberChannels);
  return streams;
}

/// A callback that is registered for the lifetime of this object. It calls `cycle` with each cycle's lists.
template <typename Cycle>
class RegisteredProc {
 public:
  RegisteredProc(AudioObjectID device, Cycle cycle) : device_(device), cycle_(std::move(cycle)) {
    EXPECT_EQ(AudioDeviceCreateIOProcID(device, &call, this, &id_), noErr);
  }
  RegisteredProc(const RegisteredProc&) = delete;
  RegisteredProc& operator=(const RegisteredProc&) = delete;
  ~RegisteredProc() { EXPECT_EQ(AudioDeviceDestroyIOProcID(device_, id_), noErr); }

  [[nodiscard]] AudioDeviceIOProcID id() const { return id_; }
  OSStatus start() { return AudioDeviceStart(device_, id_); }
  OSStatus stop() { return AudioDeviceStop(device_, id_); }

 private:
  static OSStatus call(AudioObjectID, const AudioTimeStamp*, const AudioBufferList* input,
                       const AudioTimeStamp*, AudioBufferList* output, const AudioTimeStamp*, void* self) {
    static_cast<RegisteredProc*>(self)->cycle_(*input, *output);
    return noErr;
  }

  AudioObjectID device_;
  Cycle cycle_;
  AudioDeviceIOProcID id_ = nullptr;
};

}  // namespace tolvane::test
