#pragma once

#include <optional>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// The address of a device's property in the global scope. [any-thread]
[[nodiscard]] constexpr AudioObjectPropertyAddress globalAddress(
    AudioObjectPropertySelector selector) noexcept {
  return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

/// The value of a device's property in the global scope. None if the device has no such property or has gone,
/// or if the value's size differs. [not-io]
template <class Value>
[[nodiscard]] std::optional<Value> deviceProperty(AudioDeviceID device,
                                                  AudioObjectPropertySelector selector) {
  const AudioObjectPropertyAddress address = globalAddress(selector);
  Value value{};
  UInt32 size = sizeof value;
  const OSStatus status = AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &value);
  if (status != noErr || size != sizeof value) return std::nullopt;
  return value;
}

}  // namespace tolvane::ctl
