#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/result.h"
#include "ctl/devices/wait.h"
#include "ctl/terminal/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

using DeviceChoice = Result<AudioDeviceInfo, Failure>;

/// Finds the device that `wanted` names: the one with this lasting identity (uid); else the one with exactly
/// this name; else, for a number, the one with this identifier; else the only one whose name contains
/// `wanted`, ignoring ASCII case. An empty `wanted` means the first device. Failure (noSuchDevice): no
/// device, or several; the text lists the devices. [not-io]
[[nodiscard]] DeviceChoice chooseDevice(const std::vector<AudioDeviceInfo>& devices,
                                        const std::string& wanted);

/// The same, for the last listing after the wait. Also fails (failed) while a sound server is silent and its
/// missing devices could be meant. That is the case if no device matches, if `wanted` is empty and only the
/// virtual device is present, and if `wanted` is an identifier: identifiers follow the order in which devices
/// appear. [not-io]
[[nodiscard]] DeviceChoice chooseListed(const DeviceListing& listing, const std::string& wanted);

/// Waits for the device that `wanted` names, and for silent sound servers that could have a matching device
/// too. Stops waiting after `seconds`, or as soon as `isInterrupted` returns true. [main-thread]
[[nodiscard]] DeviceChoice awaitDevice(const std::string& wanted, double seconds,
                                       const std::function<bool()>& isInterrupted);

/// The same for a program that runs the device: if `wanted` is the uid of a sound card that a sound server
/// uses, claims the card first. Also fails as claimCard() does. [main-thread]
[[nodiscard]] DeviceChoice awaitDeviceToRun(const std::string& wanted, double seconds,
                                            const std::function<bool()>& isInterrupted);

}  // namespace tolvane::ctl
