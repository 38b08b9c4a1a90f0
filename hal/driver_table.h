#pragma once

#include <memory>
#include <vector>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// One of each driver that was built, in the order in which their devices are listed. [not-io]
std::vector<std::unique_ptr<Driver>> makeDrivers();

}  // namespace tolvane::hal
