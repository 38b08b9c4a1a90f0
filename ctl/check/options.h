#pragma once

#include <string>
#include <vector>

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct CheckOptions {
  std::vector<std::string> paths;
  std::string device;  // whose channels' names to print, as for chooseDevice(); empty: none
  double waitSeconds = kDefaultWaitSeconds;  // for the device
};

/// Declares the command `check`. Parsing fills `options`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareCheck(CLI::App& program, CheckOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
