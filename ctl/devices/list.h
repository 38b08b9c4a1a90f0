#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// One device with the properties that the list shows.
struct DeviceDetails {
  AudioDeviceInfo info;
  std::string driver;  // its transport's name: "jack", "virtual", "usb"
  std::optional<double> sampleRateHz;
  std::optional<std::uint32_t> bufferFrames;
  std::string uid = {};              // lasting identity; empty if the device does not report one
  std::string proAudioCommand = {};  // puts the card into its pro-audio profile; empty if it is, or has none
  std::string cardUid = {};  // of its card, to be used without the sound server; empty if it cannot be
};

/// The name of a transport code. A code without a name gives its four characters, or "unknown" if they are
/// not printable ASCII. [not-io]
[[nodiscard]] std::string transportName(std::uint32_t transportType);

/// Reads the devices' properties from the HAL. [not-io]
[[nodiscard]] std::vector<DeviceDetails> detailsOf(const std::vector<AudioDeviceInfo>& devices);

/// A table with a title line. The long form also has the devices' lasting identities. After the table it
/// tells how to change the profile of a card that is not in its pro-audio profile, and how to use a sound
/// server's card without the server. [not-io]
enum class TableForm { usual, longer };
[[nodiscard]] std::string deviceTable(const std::vector<DeviceDetails>& devices,
                                      TableForm form = TableForm::usual);

/// A JSON array of objects, followed by a line feed. A property that the device does not have is null.
/// [not-io]
[[nodiscard]] std::string deviceJson(const std::vector<DeviceDetails>& devices);

/// What has happened to one device, as a line for people, and as a one-line JSON object: the member "event",
/// then the members that deviceJson() gives a device. [not-io]
[[nodiscard]] std::string deviceEventLine(const std::string& event, const DeviceDetails& device,
                                          TableForm form = TableForm::usual);
[[nodiscard]] std::string deviceEventJson(const std::string& event, const DeviceDetails& device);

}  // namespace tolvane::ctl
