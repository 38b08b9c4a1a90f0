#include "ctl/aggregate/choice.h"

#include <algorithm>

#include "ctl/devices/choice.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

bool canBeMember(const MemberCandidate& device) {
  return !device.isAggregate && hal::canBeAggregated(device.uid);
}

Result<hal::AggregateMember, Failure> memberOf(const MemberCandidate& device,
                                               const std::vector<MemberCandidate>& all) {
  if (canBeMember(device)) {
    return hal::AggregateMember{device.uid, device.info.name,
                                static_cast<std::uint32_t>(device.info.inputChannels),
                                static_cast<std::uint32_t>(device.info.outputChannels)};
  }
  std::string text =
      about(device.info.name, device.isAggregate ? "an aggregate cannot be in another one"
                                                 : "is not a device of PipeWire, which runs aggregates") +
      "; these can be used:";
  const std::size_t empty = text.size();
  for (const MemberCandidate& candidate : all) {
    if (!canBeMember(candidate)) continue;
    text += "\n  " + std::to_string(candidate.info.id) + "  " + printable(candidate.info.name);
  }
  if (text.size() == empty) text += " none that is there";
  return Failure{text};
}

}  // namespace

Result<hal::AggregateMember, Failure> chooseMember(const std::vector<MemberCandidate>& devices,
                                                   const std::string& wanted) {
  if (wanted.empty()) return Failure{"a device's name cannot be empty", ExitStatus::usage};
  const auto byUid = std::find_if(devices.begin(), devices.end(),
                                  [&](const MemberCandidate& device) { return device.uid == wanted; });
  if (byUid != devices.end()) return memberOf(*byUid, devices);
  std::vector<AudioDeviceInfo> infos;
  infos.reserve(devices.size());
  for (const MemberCandidate& device : devices) infos.push_back(device.info);
  const DeviceChoice choice = chooseDevice(infos, wanted);
  if (!choice) return choice.error();
  const auto chosen = std::find_if(devices.begin(), devices.end(), [&](const MemberCandidate& device) {
    return device.info.id == choice.value().id;
  });
  return memberOf(*chosen, devices);
}

}  // namespace tolvane::ctl
