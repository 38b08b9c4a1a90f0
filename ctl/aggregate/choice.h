#pragma once

#include <string>
#include <vector>

#include "base/result.h"
#include "ctl/terminal/failure.h"
#include "engine/audio_device_info.h"
#include "hal/aggregates/aggregate.h"

namespace tolvane::ctl {

/// A present device, with what decides whether it can be a member of an aggregate.
struct MemberCandidate {
  AudioDeviceInfo info;
  std::string uid;
  bool isAggregate = false;
  std::uint32_t monitorChannels = 0;  // 0: it has no monitor
};

/// Finds the device that `wanted` names: by uid, else by the rules of chooseDevice(). Text that ends in
/// ":monitor", and is not all of a device's uid or name, means the monitor of the device named before it.
/// Failure: no device, or several (noSuchDevice); `wanted` is empty (usage); the device cannot be in an
/// aggregate, or has no monitor (failed; the text lists those that can). [not-io]
[[nodiscard]] Result<hal::AggregateMember, Failure> chooseMember(const std::vector<MemberCandidate>& devices,
                                                                 const std::string& wanted);

}  // namespace tolvane::ctl
