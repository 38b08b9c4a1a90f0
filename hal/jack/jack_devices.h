// Builds the devices that the HAL lists from a server's ports.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// One physical audio port as the server names it: "client:port".
struct JackPort {
  std::string name;
  bool isCapture;  // the device's signal comes out of it

  bool operator==(const JackPort&) const = default;
};

/// A device: the physical ports of one client. Channel n is the n-th port of its direction.
struct JackDevice {
  std::string client;
  std::vector<std::string> capturePorts;   // our inputs
  std::vector<std::string> playbackPorts;  // our outputs

  bool operator==(const JackDevice&) const = default;
};

/// The client of a port: the text before the first colon.
[[nodiscard]] std::string_view jackClientOf(std::string_view portName) noexcept;

/// Groups ports by client, with the clients in the order of their first ports. The ports of one direction
/// keep the server's order. If their names differ only in a number at the end, they are sorted by that number
/// instead, because a server reuses the places of ports that have gone.
[[nodiscard]] std::vector<JackDevice> groupJackPorts(const std::vector<JackPort>& ports);

/// The server's physical audio ports, without MIDI ports and the ports of ordinary programs.
[[nodiscard]] std::vector<JackPort> physicalJackPorts(const JackLibrary& library, jack_client_t* client);

/// A server's sample rate and cycle length, and whether the cycle length can be set.
struct JackClock {
  double sampleRateHz = 0.0;
  std::uint32_t bufferFrames = 0;
  bool canBeSet = true;
};

/// The clock of the client's server. With PipeWire's libjack a cycle length lasts only as long as the client
/// that asked for it, so it counts as fixed. [not-io]
[[nodiscard]] JackClock jackClock(const JackLibrary& library, jack_client_t* client);

/// The HAL's description of the device on a server with this clock, without the names of its channels.
[[nodiscard]] DeviceInfo describeJackDevice(const JackDevice& device, const JackClock& clock);

/// All devices of the client's server. [not-io]
[[nodiscard]] std::vector<DeviceInfo> listJackDevices(const JackLibrary& library, jack_client_t* client);

}  // namespace tolvane::hal
