#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/exit_status.h"

namespace tolvane::ctl {

struct RenderOptions {
  std::string patchPath;
  std::string inputPath;
  std::string outputPath;
  std::optional<std::int32_t> outputChannels;  // none: as many as the highest routed output
  std::int32_t bufferFrames = 512;             // a cycle of the routing routine
  bool partial = false;                        // what is there of a recording that is cut off will do
};

/// Sends a sound file through a patch into a new file, or leaves no new file at all: on any failure, and when
/// a signal ends the process, what stood under the output's name still stands there. [main-thread]
[[nodiscard]] ExitStatus renderCommand(const RenderOptions& options);

}  // namespace tolvane::ctl
