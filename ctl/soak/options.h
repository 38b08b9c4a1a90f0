#pragma once

#include <string>

#include "core/routing/io_proc.h"
#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct SoakOptions {
  std::string device;                        // as for chooseDevice(); empty: the first
  double waitSeconds = kDefaultWaitSeconds;  // for the device
  double minutes = 10.0;                     // of audio
  int editsPerMinute = 600;
  std::string reportPath;  // empty: no report
  bool fullSpeed = false;
  AudioDeviceIOProc routing = &halIOProc;  // what is checked; a test puts one with a fault here
};

/// Declares the command `soak`. Parsing fills `options`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareSoak(CLI::App& program, SoakOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
