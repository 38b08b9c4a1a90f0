// The JACK driver: each client with physical audio ports is a device.
#pragma once

#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver; it never starts a server. On a machine without libjack it has no devices. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeJackDriver();

/// libjack is PipeWire's, so that its devices are those of PipeWire. Needs no server; false without libjack.
/// [not-io]
[[nodiscard]] bool jackLibraryIsPipeWire();

}  // namespace tolvane::hal
