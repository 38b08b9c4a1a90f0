#pragma once

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

struct DevicesOptions {
  bool json = false;   // instead of a table
  bool watch = false;  // run watchDevices() instead; waitSeconds is then unused
  double waitSeconds = kDefaultWaitSeconds;
};

/// Prints the audio devices. Reports and returns failed if a sound server does not answer within
/// `waitSeconds`. [main-thread]
[[nodiscard]] ExitStatus devicesCommand(const DevicesOptions& options);

}  // namespace tolvane::ctl
