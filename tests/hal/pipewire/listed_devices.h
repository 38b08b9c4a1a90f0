// Waits for the driver's list: on a busy machine the server may answer too late for one call.
#pragma once

#include <cstddef>
#include <vector>

#include "hal/driver/driver.h"
#include "support/eventually.h"

namespace tolvane::test {

/// The driver's list once it has `count` devices; if it never has, the last list.
inline std::vector<hal::DeviceInfo> listedDevices(hal::Driver& driver, std::size_t count) {
  std::vector<hal::DeviceInfo> devices;
  eventually([&] {
    devices = driver.devices();
    return devices.size() == count;
  });
  return devices;
}

/// The same without aggregates.
inline std::vector<hal::DeviceInfo> plainDevices(hal::Driver& driver, std::size_t count) {
  std::vector<hal::DeviceInfo> devices;
  eventually([&] {
    devices = driver.devices();
    std::erase_if(devices, [](const hal::DeviceInfo& device) {
      return device.transportType == kAudioDeviceTransportTypeAggregate;
    });
    return devices.size() == count;
  });
  return devices;
}

/// The device of a server that has only one.
inline hal::DeviceInfo onlyDevice(hal::Driver& driver) {
  return listedDevices(driver, 1).at(0);
}

}  // namespace tolvane::test
