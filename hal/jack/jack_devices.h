// From a server's ports to the devices that the HAL lists.
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

/// The ports of one client that has physical ones: a device. Channel n is the n-th port of its direction.
struct JackDevice {
  std::string client;
  std::vector<std::string> capturePorts;   // our inputs
  std::vector<std::string> playbackPorts;  // our outputs

  bool operator==(const JackDevice&) const = default;
};

/// The text before the first colon: the client of a port.
[[nodiscard]] std::string_view jackClientOf(std::string_view portName) noexcept;

/// Groups ports by client, clients in the order of their first ports. The ports of one direction keep the
/// server's order, unless they differ by a number at the end alone: then they are in the order of the
/// numbers, because a server reuses the places of ports that have gone.
[[nodiscard]] std::vector<JackDevice> groupJackPorts(const std::vector<JackPort>& ports);

/// The server's physical audio ports; MIDI ports and those of ordinary programs are not among them.
[[nodiscard]] std::vector<JackPort> physicalJackPorts(const JackLibrary& library, jack_client_t* client);

/// A server's rate, its cycle length, and whether it can have another.
struct JackClock {
  double sampleRateHz = 0.0;
  std::uint32_t bufferFrames = 0;
  bool canBeSet = true;
};

/// The clock of the server that the client is on. PipeWire's libjack can have another cycle length as long as
/// the client that asked for it is there, and no longer. [not-io]
[[nodiscard]] JackClock jackClock(const JackLibrary& library, jack_client_t* client);

/// What the HAL says of the device, on a server of this clock.
[[nodiscard]] DeviceInfo describeJackDevice(const JackDevice& device, const JackClock& clock);

/// All devices of the server that the client is on. [not-io]
[[nodiscard]] std::vector<DeviceInfo> listJackDevices(const JackLibrary& library, jack_client_t* client);

}  // namespace tolvane::hal
