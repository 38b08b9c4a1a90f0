#pragma once

#include <optional>

#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// A failure if the process has too few descriptors or too little memory left for the sound systems. Check
/// this before using them: without memory their libraries crash, and without descriptors they omit devices
/// and report no error. [main-thread]
[[nodiscard]] std::optional<Failure> tooFewResources();

}  // namespace tolvane::ctl
