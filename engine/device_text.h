#pragma once

#include <optional>
#include <string>

#include "hal/core_audio.h"

namespace tolvane {

/// A device's property that is a text, as its name, in UTF-8; none when the device has no such property or
/// has gone. [not-io]
[[nodiscard]] std::optional<std::string> deviceText(AudioDeviceID device,
                                                    AudioObjectPropertySelector selector);

}  // namespace tolvane
