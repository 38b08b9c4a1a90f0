#pragma once

#include "ctl/run/options.h"

namespace tolvane::ctl {

/// Routes live until SIGINT, SIGTERM, SIGQUIT, the time limit, or the meters' quit key. Reloads the patch on
/// SIGHUP and, with `watch`, whenever the file changes. At the end, prints the cycle and overload counts, the
/// IO thread's scheduling if known, and the routes. Reports to a service manager that started the process.
/// [main-thread]
[[nodiscard]] ExitStatus runCommand(const RunOptions& options);

}  // namespace tolvane::ctl
