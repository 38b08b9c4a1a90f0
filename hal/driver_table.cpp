// The one place where the drivers are named together. TOLVANE_DRIVER_FACTORIES is DRIVER(make...) for each
// one that was built, in order; the build defines it for this file.
#include "hal/driver_table.h"

namespace tolvane::hal {

#define DRIVER(factory) std::unique_ptr<Driver> factory();
TOLVANE_DRIVER_FACTORIES
#undef DRIVER

std::vector<std::unique_ptr<Driver>> makeDrivers() {
  std::vector<std::unique_ptr<Driver>> drivers;
#define DRIVER(factory) drivers.push_back(factory());
  TOLVANE_DRIVER_FACTORIES
#undef DRIVER
  return drivers;
}

}  // namespace tolvane::hal
