#pragma once

#include <set>
#include <string>
#include <vector>

#include "hal/aggregates/aggregate.h"

namespace tolvane::ctl {

// `there`: the uids of the devices that are there.

/// A line of titles and one a member: its channels in the aggregate, counted from 1, and whether it is there.
/// [not-io]
[[nodiscard]] std::string aggregateTable(const std::vector<hal::Aggregate>& aggregates,
                                         const std::set<std::string>& there);

/// As a JSON array of objects, ended by a line feed. [not-io]
[[nodiscard]] std::string aggregateJson(const std::vector<hal::Aggregate>& aggregates,
                                        const std::set<std::string>& there);

}  // namespace tolvane::ctl
