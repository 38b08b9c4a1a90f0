#pragma once

#include <string>

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct DevicesOptions {
  bool json = false;        // instead of a table
  bool longForm = false;    // with the lasting identities
  bool channels = false;    // the channels instead of the devices
  std::string device = {};  // whose channels, as for chooseDevice(); empty: all devices'
  bool watch = false;       // run watchDevices() instead
  double waitSeconds = kDefaultWaitSeconds;
};

/// Declares the command `devices`. Parsing fills `options`, then runs the command and sets `status`. Both
/// must outlive the parsing. [main-thread]
void declareDevices(CLI::App& program, DevicesOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
