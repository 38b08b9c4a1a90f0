// The JACK driver: each client with physical audio ports is a device.
#pragma once

#include <chrono>
#include <memory>

#include "hal/driver/driver.h"
#include "hal/driver/time_limits.h"

namespace tolvane::hal {

/// The driver. It never starts a server. On a machine without libjack it has no devices. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeJackDriver();

/// How long the driver waits for a silent server before it treats the server as hung.
struct JackLimits {
  std::chrono::milliseconds signOfLife = kSignOfLifeLimit;  // for any answer before a start
  std::chrono::milliseconds start = kJackStartLimit;        // the start itself
  std::chrono::milliseconds setting = kJackSettingLimit;    // a change of the cycle length
};

/// The driver with other limits, for tests that must not fail on a slow machine. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeJackDriver(const JackLimits& limits);

/// True if libjack is PipeWire's; its devices are then those of PipeWire. Needs no server. False without
/// libjack. [not-io]
[[nodiscard]] bool jackLibraryIsPipeWire();

}  // namespace tolvane::hal
