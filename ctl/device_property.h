#pragma once

#include <optional>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// The address of a device's property in the global scope. [any-thread]
[[nodiscard]] constexpr AudioObjectPropertyAddress globalAddress(
    AudioObjectPropertySelector selector) noexcept {
  return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

/// The value of a device's property in the global scope; none when the device has no such property, has gone,
/// or has a value of another size. [not-io]
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
