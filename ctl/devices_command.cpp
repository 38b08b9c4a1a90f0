#include "ctl/devices_command.h"

#include <cstdio>

#include "ctl/device_list.h"

namespace tolvane::ctl {

ExitStatus devicesCommand(bool json) {
  const CoreAudioEngine engine;
  const std::vector<DeviceDetails> devices = listDevices(engine);
  std::fputs((json ? deviceJson(devices) : deviceTable(devices)).c_str(), stdout);
  return ExitStatus::done;
}

}  // namespace tolvane::ctl
