#pragma once

#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver of the virtual device.
std::unique_ptr<Driver> makeVirtualDriver();

}  // namespace tolvane::hal
