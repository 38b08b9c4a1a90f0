#pragma once

#include <set>
#include <string>
#include <vector>

#include "hal/aggregates/aggregate.h"

namespace tolvane::ctl {

// `there`: the uids of the present devices.

/// One title line, then one line for each member: its channels in the aggregate, counted from 1, and whether
/// the device is present. [not-io]
[[nodiscard]] std::string aggregateTable(const std::vector<hal::Aggregate>& aggregates,
                                         const std::set<std::string>& there);

/// A JSON array of objects, followed by a line feed. [not-io]
[[nodiscard]] std::string aggregateJson(const std::vector<hal::Aggregate>& aggregates,
                                        const std::set<std::string>& there);

}  // namespace tolvane::ctl
