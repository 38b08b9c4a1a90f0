#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/result.h"
#include "ctl/device_wait.h"
#include "ctl/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

using DeviceChoice = Result<AudioDeviceInfo, Failure>;

/// The device that `wanted` means: the one with exactly this name; for a number, the one with this
/// identifier; else the only one with this part in its name, capitals or not (ASCII). An empty `wanted` means
/// the first. Failure (noSuchDevice): none, or several; the text lists the devices. [not-io]
[[nodiscard]] DeviceChoice chooseDevice(const std::vector<AudioDeviceInfo>& devices,
                                        const std::string& wanted);

/// The same of a listing that is not waited for any longer. Failure, too (failed): what is missing in it
/// could be meant as well. That is so where there is no such device yet, where nothing is wanted and only the
/// virtual device is there, and for an identifier, since devices that come get other ones. [not-io]
[[nodiscard]] DeviceChoice chooseListed(const DeviceListing& listing, const std::string& wanted);

/// The device that `wanted` means, waited for until it is there and no sound server that could have it, too,
/// is silent: for `seconds` at the most, and until `isInterrupted` says true. [main-thread]
[[nodiscard]] DeviceChoice awaitDevice(const std::string& wanted, double seconds,
                                       const std::function<bool()>& isInterrupted);

}  // namespace tolvane::ctl
