#pragma once

#include "ctl/render/options.h"

namespace tolvane::ctl {

/// Renders a sound file through a patch into a new file. On a failure, or if a signal ends the process, there
/// is no new file, and an old file under the output's name stays. [main-thread]
[[nodiscard]] ExitStatus renderCommand(const RenderOptions& options);

}  // namespace tolvane::ctl
