#pragma once

#include <string>
#include <vector>

#include "ctl/devices/wait.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct AggregateOptions {
  bool json = false;
  std::string name;
  std::vector<std::string> devices;
  double waitSeconds = kDefaultWaitSeconds;
};

/// Declares the command `aggregate` with its subcommands. Parsing fills `options`, then runs the command and
/// sets `status`. Both must outlive the parsing. [main-thread]
void declareAggregate(CLI::App& program, AggregateOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
