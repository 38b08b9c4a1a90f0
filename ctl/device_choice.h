#pragma once

#include <string>
#include <vector>

#include "core/result.h"
#include "ctl/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

using DeviceChoice = Result<AudioDeviceInfo, Failure>;

/// The device that `wanted` means: the one with exactly this name; for a number, the one with this
/// identifier; else the only one with this part in its name, capitals or not (ASCII). An empty `wanted` means
/// the first. Failure (noSuchDevice): none, or several; the text lists the devices. [not-io]
[[nodiscard]] DeviceChoice chooseDevice(const std::vector<AudioDeviceInfo>& devices,
                                        const std::string& wanted);

}  // namespace tolvane::ctl
