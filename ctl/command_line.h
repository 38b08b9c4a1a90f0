#pragma once

#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

/// Parses the arguments and runs the command. [main-thread]
[[nodiscard]] ExitStatus runCommandLine(int argc, char** argv);

}  // namespace tolvane::ctl
