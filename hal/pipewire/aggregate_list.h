// Makes aggregates of the devices that are there.
#pragma once

#include <functional>
#include <vector>

#include "hal/pipewire/device_list.h"

namespace tolvane::hal::pipewire {

/// What an aggregate that is running is made of; null for one that is not. It goes before what is to be made
/// of it the next time.
using RunningMembers = std::function<const std::vector<AggregateMember>*(const std::string& uid)>;

/// The aggregates to be listed after `devices`: that of all cards, when there are two or more, in the order
/// of `devices`; then the named ones of which at least one member is there. Their cycles are not described.
[[nodiscard]] std::vector<ListedDevice> aggregatesOf(const std::vector<ListedDevice>& devices,
                                                     const std::vector<Aggregate>& named,
                                                     const RunningMembers& running);

}  // namespace tolvane::hal::pipewire
