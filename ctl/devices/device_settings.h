#pragma once

#include <cstdint>
#include <optional>

#include "ctl/terminal/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// What a user asks of a device. None: as it is.
struct DeviceSettings {
  std::optional<std::uint32_t> sampleRateHz = std::nullopt;
  std::optional<std::uint32_t> bufferFrames = std::nullopt;
  std::optional<std::uint32_t> periods = std::nullopt;
};

/// Sets the device. The rate comes first, because the device's channels and its other ranges may depend on
/// it; `device` gets the channels that it then has. Failure (failed): a setting that the device does not have
/// or is not in its range, or that it refuses or changes. The settings before it stay set. Waits up to a
/// second for each. [main-thread]
[[nodiscard]] std::optional<Failure> applySettings(AudioDeviceInfo& device, const DeviceSettings& settings);

}  // namespace tolvane::ctl
