#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/device_wait.h"
#include "ctl/exit_status.h"

namespace tolvane::ctl {

struct RunOptions {
  std::string patchPath;
  std::string device;                         // as chooseDevice takes it; empty: the first
  double waitSeconds = kDefaultWaitSeconds;   // for the device
  std::optional<std::uint32_t> bufferFrames;  // none: as the device has it
  bool watch = false;
  bool meters = false;
  std::optional<double> seconds;  // none: until a signal
};

/// Routes live until SIGINT, SIGTERM or the time is up; SIGHUP, and with `watch` every change of the file,
/// brings in the patch anew. At the end prints the cycles, the overloads and the routes. [main-thread]
[[nodiscard]] ExitStatus runCommand(const RunOptions& options);

}  // namespace tolvane::ctl
