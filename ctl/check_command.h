#pragma once

#include <string>
#include <vector>

#include "ctl/exit_status.h"

namespace tolvane::ctl {

/// Prints the routes of each patch file, or says what is wrong with it; all are read, whatever the first ones
/// are. badPatch when any is not a patch, or has an active route of a channel that no device can have; else
/// failed when any cannot be read. [main-thread]
[[nodiscard]] ExitStatus checkCommand(const std::vector<std::string>& paths);

}  // namespace tolvane::ctl
