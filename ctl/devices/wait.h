// The device list, with a wait for sound servers that are slow to answer.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/result.h"
#include "ctl/terminal/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// How long a command waits for sound servers and for the devices that its arguments name.
inline constexpr double kDefaultWaitSeconds = 3.0;

/// The present devices.
struct DeviceListing {
  std::vector<AudioDeviceInfo> devices;
  std::string silentServers;  // "jack, pipewire": do not answer, so their devices are missing
};

using DeviceListingResult = Result<DeviceListing, Failure>;

/// Lists the devices repeatedly until `isEnough` accepts a listing or `seconds` have passed, and returns the
/// last listing. A sound server that answered and then falls silent is waited for as long again from its last
/// answer on. The first call also says what keeps installed sound systems from being used. Failure: the
/// HAL cannot list its devices. [main-thread]
[[nodiscard]] DeviceListingResult awaitDevices(double seconds,
                                               const std::function<bool(const DeviceListing&)>& isEnough);

/// The same, until every sound server has answered. [main-thread]
[[nodiscard]] DeviceListingResult awaitAllDevices(double seconds);

/// The failure that names the listing's silent servers; there must be one. [not-io]
[[nodiscard]] Failure silenceOf(const DeviceListing& listing);

/// A HAL status for a message: words if it has any, else its number. [not-io]
[[nodiscard]] std::string statusText(OSStatus status);

}  // namespace tolvane::ctl
