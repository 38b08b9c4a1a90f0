#pragma once

#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver for PipeWire. It does nothing until its first use. Then it keeps one connection to the server
/// and reconnects when the server comes back. Without the client library or a server it has no devices.
///
/// A session whose device goes away is silent until the device is back under the same identity. It then
/// continues with the channel numbers that it was started with. While only a part of the device is away, the
/// channels of that part have buffers without data and the other channels play on. The device stays alive
/// while any of its channels is linked. [not-io]
std::unique_ptr<Driver> makePipeWireDriver();

}  // namespace tolvane::hal
