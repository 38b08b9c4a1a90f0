#pragma once

#include <optional>
#include <string>

#include "hal/core_audio.h"

namespace tolvane {

/// A text property of a device, such as its name, in UTF-8. None if the device lacks the property or is gone.
/// [not-io]
[[nodiscard]] std::optional<std::string> deviceText(AudioDeviceID device,
                                                    AudioObjectPropertySelector selector);

}  // namespace tolvane
