#pragma once

#include <cstdint>
#include <optional>

#include "ctl/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// Makes `frames` the device's frames a cycle. Failure (failed): the device's size is fixed and another,
/// `frames` is outside of its range, the device refuses, or it takes another size than was asked.
/// [main-thread]
[[nodiscard]] std::optional<Failure> setBufferFrames(const AudioDeviceInfo& device, std::uint32_t frames);

}  // namespace tolvane::ctl
