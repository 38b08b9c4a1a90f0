#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// One device with what the user may want to know of it beyond its channels.
struct DeviceDetails {
  AudioDeviceInfo info;
  std::string driver;  // what carries its audio: "jack", "virtual", "usb"
  std::optional<double> sampleRateHz;
  std::optional<std::uint32_t> bufferFrames;
};

/// The name of what carries a device's audio, by its transport code; the code's own four characters where it
/// has no name here. [not-io]
[[nodiscard]] std::string transportName(std::uint32_t transportType);

/// What the HAL tells of these devices. [not-io]
[[nodiscard]] std::vector<DeviceDetails> detailsOf(const std::vector<AudioDeviceInfo>& devices);

/// As a table with a line of titles. [not-io]
[[nodiscard]] std::string deviceTable(const std::vector<DeviceDetails>& devices);

/// As a JSON array of objects, ended by a line feed; what a device does not tell is null. [not-io]
[[nodiscard]] std::string deviceJson(const std::vector<DeviceDetails>& devices);

/// What has happened to one device, as a line for people, and as a JSON object on a line with the member
/// "event" before those of the list. [not-io]
[[nodiscard]] std::string deviceEventLine(const std::string& event, const DeviceDetails& device);
[[nodiscard]] std::string deviceEventJson(const std::string& event, const DeviceDetails& device);

}  // namespace tolvane::ctl
