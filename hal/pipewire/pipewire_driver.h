#pragma once

#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver for PipeWire. It does nothing before it is first asked for something; then it keeps one
/// connection to the server, and gets it back when the server has been away. Without the client library or a
/// server it has no devices.
///
/// A session's device that goes away is silent until it is back under the same identity; then it runs on with
/// the channel numbers that it was started with. While only a part of it is away, the other channels play on
/// and those of that part are buffers without data; it counts as there as long as it has something of each of
/// its directions. [not-io]
std::unique_ptr<Driver> makePipeWireDriver();

}  // namespace tolvane::hal
