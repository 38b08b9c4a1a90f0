#pragma once

#include <string>
#include <vector>

#include "ctl/device_wait.h"
#include "ctl/exit_status.h"

namespace tolvane::ctl {

struct AggregateOptions {
  bool json = false;
  std::string name;
  std::vector<std::string> devices;
  double waitSeconds = kDefaultWaitSeconds;
};

// Each says on standard error why it fails. Where the system has a tool of its own for aggregates, all fail.

/// Prints the named aggregates, as a table or as JSON. Fails, too, when a sound server is silent for as long
/// as devices are waited for. [main-thread]
[[nodiscard]] ExitStatus aggregateListCommand(const AggregateOptions& options);

/// Makes an aggregate of the devices, in their order, which are waited for. [main-thread]
[[nodiscard]] ExitStatus aggregateCreateCommand(const AggregateOptions& options);

/// Forgets the aggregate. [main-thread]
[[nodiscard]] ExitStatus aggregateDeleteCommand(const AggregateOptions& options);

}  // namespace tolvane::ctl
