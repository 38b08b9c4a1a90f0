#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/devices/device_settings.h"
#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct RunOptions {
  std::string patchPath;
  std::string device;                        // as for chooseDevice(); empty: the first
  double waitSeconds = kDefaultWaitSeconds;  // for the device
  DeviceSettings settings;
  bool watch = false;
  bool meters = false;
  std::optional<double> seconds;  // none: until a signal
  std::string osc;                // [ADDRESS:]PORT; empty: closed
  std::string http;               // likewise
  std::string tlsCertificate;     // PEM files for HTTP; empty: no TLS
  std::string tlsKey;
  std::string tokenPath;    // empty: no token
  std::string sceneFolder;  // empty: no scenes
  std::uint32_t rampMs = 0;
};

/// Declares the command `run`. Parsing fills `options`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareRun(CLI::App& program, RunOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
