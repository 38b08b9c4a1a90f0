#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

struct RunOptions {
  std::string patchPath;
  std::string device;                         // as for chooseDevice(); empty: the first
  double waitSeconds = kDefaultWaitSeconds;   // for the device
  std::optional<std::uint32_t> bufferFrames;  // none: leave the device as it is
  bool watch = false;
  bool meters = false;
  std::optional<double> seconds;  // none: until a signal
};

/// Routes live until SIGINT, SIGTERM, SIGQUIT, the time limit, or the meters' quit key. Reloads the patch on
/// SIGHUP and, with `watch`, whenever the file changes. At the end, prints the cycle and overload counts, the
/// IO thread's scheduling if known, and the routes. [main-thread]
[[nodiscard]] ExitStatus runCommand(const RunOptions& options);

}  // namespace tolvane::ctl
