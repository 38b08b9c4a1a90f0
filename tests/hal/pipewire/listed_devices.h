// What the driver lists, waited for: a busy machine's server may answer after the time that a list may take.
#pragma once

#include <cstddef>
#include <vector>

#include "hal/driver/driver.h"
#include "support/eventually.h"

namespace tolvane::test {

/// The driver's list as soon as it has `count` devices, else as it is when the wait is over.
inline std::vector<hal::DeviceInfo> listedDevices(hal::Driver& driver, std::size_t count) {
  std::vector<hal::DeviceInfo> devices;
  eventually([&] {
    devices = driver.devices();
    return devices.size() == count;
  });
  return devices;
}

/// The same without what is made of other devices.
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

/// The one device of a server that has one.
inline hal::DeviceInfo onlyDevice(hal::Driver& driver) {
  return listedDevices(driver, 1).at(0);
}

}  // namespace tolvane::test
