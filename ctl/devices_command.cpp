#include "ctl/devices_command.h"

#include <cstdio>

#include "ctl/device_list.h"
#include "ctl/device_watch.h"

namespace tolvane::ctl {

ExitStatus devicesCommand(const DevicesOptions& options) {
  if (options.watch) return watchDevices(options.json);
  const CoreAudioEngine engine;
  const std::vector<DeviceDetails> devices = listDevices(engine);
  std::fputs((options.json ? deviceJson(devices) : deviceTable(devices)).c_str(), stdout);
  return ExitStatus::done;
}

}  // namespace tolvane::ctl
