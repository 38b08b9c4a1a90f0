#pragma once

#include "ctl/exit_status.h"

namespace tolvane::ctl {

/// The whole program: reads the arguments, runs the command that they name. [main-thread]
[[nodiscard]] ExitStatus runCommandLine(int argc, char** argv);

}  // namespace tolvane::ctl
