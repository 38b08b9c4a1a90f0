#pragma once

#include <string>
#include <vector>

#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

/// Prints the routes of each patch file, or reports what is wrong with it. An error does not stop the others
/// from being checked. Returns badPatch if any file is no patch or has an active route on a channel that no
/// device can have, else failed if any file cannot be read. [main-thread]
[[nodiscard]] ExitStatus checkCommand(const std::vector<std::string>& paths);

}  // namespace tolvane::ctl
