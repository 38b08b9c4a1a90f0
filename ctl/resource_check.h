#pragma once

#include <optional>

#include "ctl/failure.h"

namespace tolvane::ctl {

/// A failure when the process has fewer descriptors or less memory left than the sound systems need. To be
/// asked before they are: their libraries crash without memory, and are silent about devices that they have
/// no descriptor for. [main-thread]
[[nodiscard]] std::optional<Failure> tooFewResources();

}  // namespace tolvane::ctl
