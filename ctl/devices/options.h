#pragma once

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct DevicesOptions {
  bool json = false;   // instead of a table
  bool watch = false;  // run watchDevices() instead
  double waitSeconds = kDefaultWaitSeconds;
};

/// Declares the command `devices`. Parsing fills `options`, then runs the command and sets `status`. Both
/// must outlive the parsing. [main-thread]
void declareDevices(CLI::App& program, DevicesOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
