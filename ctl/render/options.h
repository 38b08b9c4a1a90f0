#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

struct RenderOptions {
  std::string patchPath;
  std::string inputPath;
  std::string outputPath;
  std::optional<std::int32_t> outputChannels;  // none: up to the highest routed output
  std::int32_t bufferFrames = 512;             // frames per cycle of the routing routine
  bool partial = false;                        // render a cut-off recording as far as it goes
};

/// Declares the command `render`. Parsing fills `options`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareRender(CLI::App& program, RenderOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
