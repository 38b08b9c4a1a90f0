#pragma once

#include "ctl/exit_status.h"

namespace tolvane::ctl {

struct DevicesOptions {
  bool json = false;   // instead of a table
  bool watch = false;  // go on as watchDevices does
};

/// Prints the audio devices. [main-thread]
[[nodiscard]] ExitStatus devicesCommand(const DevicesOptions& options);

}  // namespace tolvane::ctl
