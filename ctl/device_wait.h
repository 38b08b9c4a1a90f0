// The list of devices, waited for where a sound server is late.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/result.h"
#include "ctl/failure.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// How long a command waits for sound servers, and for a device that it was told to use.
inline constexpr double kDefaultWaitSeconds = 3.0;

/// The devices that are there.
struct DeviceListing {
  std::vector<AudioDeviceInfo> devices;
  std::string silentServers;  // "jack, pipewire": they do not answer, and their devices are missing
};

using DeviceListingResult = Result<DeviceListing, Failure>;

/// Lists again and again until `isEnough` says true of a listing, but not for longer than `seconds`; the last
/// listing. Failure: the HAL can list none. [main-thread]
[[nodiscard]] DeviceListingResult awaitDevices(double seconds,
                                               const std::function<bool(const DeviceListing&)>& isEnough);

/// The same until every sound server has answered. [main-thread]
[[nodiscard]] DeviceListingResult awaitAllDevices(double seconds);

/// That servers do not answer, of a listing in which some do not. [not-io]
[[nodiscard]] Failure silenceOf(const DeviceListing& listing);

/// What a status of the HAL means, in words where it has any. [not-io]
[[nodiscard]] std::string statusText(OSStatus status);

}  // namespace tolvane::ctl
