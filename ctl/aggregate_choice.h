#pragma once

#include <string>
#include <vector>

#include "core/result.h"
#include "ctl/failure.h"
#include "engine/audio_device_info.h"
#include "hal/aggregates/aggregate.h"

namespace tolvane::ctl {

/// A device that is there, with what makes it a member of an aggregate.
struct MemberCandidate {
  AudioDeviceInfo info;
  std::string uid;
  bool isAggregate = false;
};

/// The device that is meant: the one of this uid, else as chooseDevice() has it. Failure: none, or several
/// (noSuchDevice); one that cannot be in an aggregate, the text then lists those that can; nothing at all is
/// meant (usage). [not-io]
[[nodiscard]] Result<hal::AggregateMember, Failure> chooseMember(const std::vector<MemberCandidate>& devices,
                                                                 const std::string& wanted);

}  // namespace tolvane::ctl
