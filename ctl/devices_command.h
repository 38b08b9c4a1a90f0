#pragma once

#include "ctl/device_wait.h"
#include "ctl/exit_status.h"

namespace tolvane::ctl {

struct DevicesOptions {
  bool json = false;   // instead of a table
  bool watch = false;  // go on as watchDevices does
  double waitSeconds = kDefaultWaitSeconds;
};

/// Prints the audio devices. Failed, and said, when a sound server is silent for as long as they are waited
/// for. [main-thread]
[[nodiscard]] ExitStatus devicesCommand(const DevicesOptions& options);

}  // namespace tolvane::ctl
