#pragma once

#include "ctl/soak/options.h"

namespace tolvane::ctl {

/// Sends signals through the device, edits the routes, compares every sample that can be known, prints what
/// was found and writes the report. Returns failed if a sample was wrong or missing. [main-thread]
[[nodiscard]] ExitStatus soakCommand(const SoakOptions& options);

}  // namespace tolvane::ctl
