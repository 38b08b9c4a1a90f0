#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

struct RenderOptions {
  std::string patchPath;
  std::string inputPath;
  std::string outputPath;
  std::optional<std::int32_t> outputChannels;  // none: up to the highest routed output
  std::int32_t bufferFrames = 512;             // frames per cycle of the routing routine
  bool partial = false;                        // render a cut-off recording as far as it goes
};

/// Renders a sound file through a patch into a new file. On a failure, or if a signal ends the process, there
/// is no new file, and an old file under the output's name stays. [main-thread]
[[nodiscard]] ExitStatus renderCommand(const RenderOptions& options);

}  // namespace tolvane::ctl
