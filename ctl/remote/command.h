#pragma once

#include "ctl/remote/options.h"

namespace tolvane::ctl {

/// Asks a run for what the options say, and prints its answer. Returns usage if the program was built without
/// HTTP or the token file is not as Token::read() wants it; failed if the run cannot be reached, refuses, or
/// is lost; else done. [main-thread]
[[nodiscard]] ExitStatus remoteCommand(const RemoteOptions& options);

}  // namespace tolvane::ctl
