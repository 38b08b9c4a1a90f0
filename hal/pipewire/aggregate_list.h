// Builds the list of aggregates from the devices that are present.
#pragma once

#include <functional>
#include <vector>

#include "hal/pipewire/device_list.h"

namespace tolvane::hal::pipewire {

/// Returns the members of a running aggregate, or null if it is not running. A running aggregate keeps these
/// members; a changed definition takes effect at its next start.
using RunningMembers = std::function<const std::vector<AggregateMember>*(const std::string& uid)>;

/// The aggregates to list after `devices`. The first one contains all complete cards, in the order of
/// `devices`, if there are at least two. The named aggregates follow. Each aggregate is listed only if at
/// least one of its members is present. The caller fills in sample rates and buffer sizes.
[[nodiscard]] std::vector<ListedDevice> aggregatesOf(const std::vector<ListedDevice>& devices,
                                                     const std::vector<Aggregate>& named,
                                                     const RunningMembers& running);

}  // namespace tolvane::hal::pipewire
