#pragma once

#include "ctl/exit_status.h"

namespace tolvane::ctl {

/// Prints the audio devices, as a table or as JSON. [main-thread]
[[nodiscard]] ExitStatus devicesCommand(bool json);

}  // namespace tolvane::ctl
