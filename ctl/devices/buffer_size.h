#pragma once

#include <cstdint>
#include <optional>

#include "ctl/terminal/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// Sets the device's buffer size in frames. Failure (failed): the device has no range of sizes, `frames` is
/// outside its range, the device refuses the size, or the device takes another one. [main-thread]
[[nodiscard]] std::optional<Failure> setBufferFrames(const AudioDeviceInfo& device, std::uint32_t frames);

}  // namespace tolvane::ctl
