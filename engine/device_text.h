#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hal/core_audio.h"

namespace tolvane {

/// A text property of a device, such as its name, in UTF-8. None if the device lacks the property or is gone.
/// [not-io]
[[nodiscard]] std::optional<std::string> deviceText(AudioDeviceID device,
                                                    AudioObjectPropertySelector selector);

/// A text property of one of the device's channels, counted from 0, in UTF-8. None if it is empty, or as for
/// deviceText(). [not-io]
[[nodiscard]] std::optional<std::string> channelText(AudioDeviceID device, bool isInput, std::int64_t channel,
                                                     AudioObjectPropertySelector selector);

/// The name that the channel's owner gave it. [not-io]
[[nodiscard]] inline std::optional<std::string> channelName(AudioDeviceID device, bool isInput,
                                                            std::int64_t channel) {
  return channelText(device, isInput, channel, kAudioObjectPropertyElementName);
}

}  // namespace tolvane
