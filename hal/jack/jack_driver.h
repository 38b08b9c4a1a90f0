// The JACK driver: each client with physical audio ports is a device.
#pragma once

#include <chrono>
#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver; it never starts a server. On a machine without libjack it has no devices. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeJackDriver();

/// How long the driver waits for a server that says nothing: then it takes it for one that hangs.
struct JackLimits {
  std::chrono::milliseconds signOfLife{800};  // of a server that is to start a session
  std::chrono::milliseconds start{4500};      // the whole start: a busy server takes some milliseconds a port
  std::chrono::milliseconds setting{450};     // another cycle length
};

/// The driver with other limits, for tests that the machine's pace must not fail. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeJackDriver(const JackLimits& limits);

/// libjack is PipeWire's, so that its devices are those of PipeWire. Needs no server; false without libjack.
/// [not-io]
[[nodiscard]] bool jackLibraryIsPipeWire();

}  // namespace tolvane::hal
