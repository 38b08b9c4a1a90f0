#pragma once

#include "ctl/check/options.h"

namespace tolvane::ctl {

/// Prints the routes of each patch file, or reports what is wrong with it. An error does not stop the others
/// from being checked. With a device, waits for it and prints the names of its channels too. Returns
/// noSuchDevice, and checks nothing, if there is no such device; else badPatch if any file is no patch or has
/// an active route on a channel that no device can have; else failed if any file cannot be read.
/// [main-thread]
[[nodiscard]] ExitStatus checkCommand(const CheckOptions& options);

}  // namespace tolvane::ctl
