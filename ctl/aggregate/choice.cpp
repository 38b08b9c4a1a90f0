#include "ctl/aggregate/choice.h"

#include <algorithm>

#include "ctl/devices/choice.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

bool canBeMember(const MemberCandidate& device) {
  return !device.isAggregate && hal::canBeAggregated(device.uid);
}

bool hasMonitor(const MemberCandidate& device) {
  return canBeMember(device) && device.monitorChannels != 0;
}

/// `problem`, and the devices that `isUsable` accepts.
Failure refusal(const MemberCandidate& device, const std::string& problem,
                const std::vector<MemberCandidate>& all, bool (*isUsable)(const MemberCandidate&)) {
  std::string text = about(device.info.name, problem) + "; these can be used:";
  const std::size_t empty = text.size();
  for (const MemberCandidate& candidate : all) {
    if (!isUsable(candidate)) continue;
    text += "\n  " + std::to_string(candidate.info.id) + "  " + printable(candidate.info.name);
  }
  if (text.size() == empty) text += " none that is there";
  return Failure{text};
}

Result<hal::AggregateMember, Failure> memberOf(const MemberCandidate& device,
                                               const std::vector<MemberCandidate>& all) {
  if (canBeMember(device)) {
    return hal::AggregateMember{device.uid, device.info.name,
                                static_cast<std::uint32_t>(device.info.inputChannels),
                                static_cast<std::uint32_t>(device.info.outputChannels)};
  }
  return refusal(device,
                 device.isAggregate ? "an aggregate cannot be in another one"
                                    : "is not a device of PipeWire, which runs aggregates",
                 all, canBeMember);
}

Result<hal::AggregateMember, Failure> monitorOf(const MemberCandidate& device,
                                                const std::vector<MemberCandidate>& all) {
  if (hasMonitor(device)) {
    return hal::AggregateMember{hal::monitorUid(device.uid), hal::monitorUid(device.info.name),
                                device.monitorChannels, 0};
  }
  return refusal(device, "has no monitor: only outputs of PipeWire have one", all, hasMonitor);
}

Result<MemberCandidate, Failure> chooseCandidate(const std::vector<MemberCandidate>& devices,
                                                 const std::string& wanted) {
  const auto byUid = std::find_if(devices.begin(), devices.end(),
                                  [&](const MemberCandidate& device) { return device.uid == wanted; });
  if (byUid != devices.end()) return *byUid;
  std::vector<AudioDeviceInfo> infos;
  infos.reserve(devices.size());
  for (const MemberCandidate& device : devices) infos.push_back(device.info);
  const DeviceChoice choice = chooseDevice(infos, wanted);
  if (!choice) return choice.error();
  return *std::find_if(devices.begin(), devices.end(),
                       [&](const MemberCandidate& device) { return device.info.id == choice.value().id; });
}

/// True if `wanted` names a monitor and not a device.
bool isMonitorName(const std::vector<MemberCandidate>& devices, const std::string& wanted) {
  const bool isDevice = std::any_of(devices.begin(), devices.end(), [&](const MemberCandidate& device) {
    return device.uid == wanted || device.info.name == wanted;
  });
  return !isDevice && wanted.ends_with(hal::kMonitorSuffix) && wanted.size() > hal::kMonitorSuffix.size();
}

}  // namespace

Result<hal::AggregateMember, Failure> chooseMember(const std::vector<MemberCandidate>& devices,
                                                   const std::string& wanted) {
  if (wanted.empty()) return Failure{"a device's name cannot be empty", ExitStatus::usage};
  const bool isMonitor = isMonitorName(devices, wanted);
  const auto device = chooseCandidate(
      devices, isMonitor ? wanted.substr(0, wanted.size() - hal::kMonitorSuffix.size()) : wanted);
  if (!device) return device.error();
  return isMonitor ? monitorOf(device.value(), devices) : memberOf(device.value(), devices);
}

}  // namespace tolvane::ctl
