// The channels of devices, with the names that their owners gave them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ctl/devices/list.h"
#include "ctl/patch/route_table.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// The texts of one channel. None where there is none.
struct ChannelDetails {
  std::optional<std::string> name;
  std::optional<std::string> node;  // of the sound server, as a patch bay shows it
  std::optional<std::string> port;  // likewise
};

/// A device with its channels, in order.
struct DeviceChannels {
  DeviceDetails device;
  std::vector<ChannelDetails> inputs;
  std::vector<ChannelDetails> outputs;
};

/// Reads the devices' properties from the HAL. [not-io]
[[nodiscard]] std::vector<DeviceChannels> channelDetailsOf(const std::vector<AudioDeviceInfo>& devices);

/// A table with a title line, one channel a line: "in 1" with its texts. Very long texts are cut. [not-io]
[[nodiscard]] std::string channelTable(const std::vector<DeviceChannels>& devices);

/// The array of deviceJson(), whose objects also have the members "inputs" and "outputs". Each is an array of
/// objects with the members "channel", counted from 0, "name", "node" and "port". What there is not is null.
/// [not-io]
[[nodiscard]] std::string channelJson(const std::vector<DeviceChannels>& devices);

/// The names of one device's channels as last read. [main-thread]
class ChannelNames {
 public:
  /// Reads the names from the HAL. A channel that has no name now, for example because its part of the device
  /// is away, keeps the one that was read before.
  void read(const AudioDeviceInfo& device);

  /// The name of a channel, counted from 0; empty if it has none or does not exist.
  [[nodiscard]] const std::string& ofInput(std::int64_t channel) const noexcept;
  [[nodiscard]] const std::string& ofOutput(std::int64_t channel) const noexcept;

  /// For routeTable(), while this object lives.
  [[nodiscard]] RouteNames forRoutes() const;

 private:
  std::vector<std::string> inputs_;
  std::vector<std::string> outputs_;
};

}  // namespace tolvane::ctl
