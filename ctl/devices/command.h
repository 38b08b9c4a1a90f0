#pragma once

#include "ctl/devices/options.h"

namespace tolvane::ctl {

/// Prints the audio devices. Reports and returns failed if a sound server does not answer within
/// `waitSeconds`. [main-thread]
[[nodiscard]] ExitStatus devicesCommand(const DevicesOptions& options);

}  // namespace tolvane::ctl
