#pragma once

#include "ctl/aggregate/options.h"

namespace tolvane::ctl {

// Each command reports its failure on standard error. All fail on a system that has its own tool for
// aggregates.

/// Prints the named aggregates, as a table or as JSON. Fails after printing if a sound server does not answer
/// within `waitSeconds`. [main-thread]
[[nodiscard]] ExitStatus aggregateListCommand(const AggregateOptions& options);

/// Waits up to `waitSeconds` for the devices and makes an aggregate of them, in the given order.
/// [main-thread]
[[nodiscard]] ExitStatus aggregateCreateCommand(const AggregateOptions& options);

/// Deletes the aggregate; its devices stay. [main-thread]
[[nodiscard]] ExitStatus aggregateDeleteCommand(const AggregateOptions& options);

}  // namespace tolvane::ctl
