#include <algorithm>
#include <cstdio>
#include <set>

#include "ctl/aggregate/choice.h"
#include "ctl/aggregate/command.h"
#include "ctl/aggregate/list.h"
#include "ctl/aggregate/store.h"
#include "ctl/devices/property.h"
#include "ctl/process/resource_check.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

using Members = Result<std::vector<hal::AggregateMember>, Failure>;

std::vector<MemberCandidate> candidatesOf(const DeviceListing& listing) {
  std::vector<MemberCandidate> devices;
  for (const AudioDeviceInfo& info : listing.devices) {
    const auto transport = deviceProperty<UInt32>(info.id, kAudioDevicePropertyTransportType);
    devices.push_back({info, deviceText(info.id, kAudioDevicePropertyDeviceUID).value_or(""),
                       transport == kAudioDeviceTransportTypeAggregate,
                       deviceProperty<UInt32>(info.id, kTolvaneDevicePropertyMonitorChannels).value_or(0)});
  }
  return devices;
}

Members chooseMembers(const std::vector<MemberCandidate>& devices, const std::vector<std::string>& wanted) {
  std::vector<hal::AggregateMember> members;
  for (const std::string& text : wanted) {
    auto member = chooseMember(devices, text);
    if (!member) return member.error();
    const bool isTwice = std::any_of(members.begin(), members.end(),
                                     [&](const auto& other) { return other.uid == member.value().uid; });
    if (isTwice) return Failure{about(member.value().name, "is named twice")};
    members.push_back(std::move(member).value());
  }
  return members;
}

/// Waits for the members. Sets `devices` to all devices present at the end of the wait.
Members findMembers(const AggregateOptions& options, std::vector<MemberCandidate>& devices) {
  const auto isMissing = [](const Members& members) {
    return !members && members.error().status == ExitStatus::noSuchDevice;
  };
  const DeviceListingResult result = awaitDevices(options.waitSeconds, [&](const DeviceListing& listing) {
    return listing.silentServers.empty() && !isMissing(chooseMembers(candidatesOf(listing), options.devices));
  });
  if (!result) return result.error();
  const DeviceListing& listing = result.value();
  devices = candidatesOf(listing);
  Members members = chooseMembers(devices, options.devices);
  return isMissing(members) && !listing.silentServers.empty() ? silenceOf(listing) : members;
}

std::optional<Failure> refuseName(const hal::AggregateDocument& document, const std::string& name,
                                  const std::vector<MemberCandidate>& devices) {
  if (document.find(name) != nullptr)
    return Failure{"there is an aggregate called \"" + printable(name) + "\" already"};
  const bool isDevices = std::any_of(devices.begin(), devices.end(),
                                     [&](const MemberCandidate& device) { return device.info.name == name; });
  if (isDevices) return Failure{"there is a device called \"" + printable(name) + "\" already"};
  return std::nullopt;
}

Failure noAggregate(const std::string& name) {
  return {"no aggregate is called \"" + printable(name) + "\"", ExitStatus::noSuchDevice};
}

/// Reports the failure, if there is one.
ExitStatus statusOf(const std::optional<Failure>& failure) {
  return failure ? fail(*failure) : ExitStatus::done;
}

}  // namespace

ExitStatus aggregateListCommand(const AggregateOptions& options) {
  const auto document = readAggregates();
  if (!document) return fail(document.error());
  if (const auto failure = tooFewResources()) return fail(*failure);
  const DeviceListingResult listing = awaitAllDevices(options.waitSeconds);
  if (!listing) return fail(listing.error());
  std::set<std::string> there;
  for (const MemberCandidate& device : candidatesOf(listing.value())) {
    there.insert(device.uid);
    if (device.monitorChannels != 0) there.insert(hal::monitorUid(device.uid));
  }
  const auto& aggregates = document.value().aggregates();
  const std::string text =
      options.json ? aggregateJson(aggregates, there) : aggregateTable(aggregates, there);
  std::fputs(text.c_str(), stdout);
  return listing.value().silentServers.empty() ? ExitStatus::done : fail(silenceOf(listing.value()));
}

ExitStatus aggregateCreateCommand(const AggregateOptions& options) {
  if (const std::string why = hal::whyNoNewAggregateName(options.name); !why.empty()) {
    return fail({why, ExitStatus::usage});
  }
  if (options.devices.size() > hal::kMaxAggregateMembers) {
    return fail({"an aggregate has at most " + std::to_string(hal::kMaxAggregateMembers) + " devices",
                 ExitStatus::usage});
  }
  // Check the file before waiting for devices: an invalid one does not tell which names are taken.
  if (const auto document = readAggregates(); !document) return fail(document.error());
  if (const auto failure = tooFewResources()) return fail(*failure);
  std::vector<MemberCandidate> devices;
  Members members = findMembers(options, devices);
  if (!members) return fail(members.error());
  auto store = AggregateStore::open();
  if (!store) return fail(store.error());
  AggregateStore file = std::move(store).value();
  if (const auto refusal = refuseName(file.document(), options.name, devices)) return fail(*refusal);
  return statusOf(file.write(file.document().textWith({options.name, std::move(members).value()})));
}

ExitStatus aggregateDeleteCommand(const AggregateOptions& options) {
  const auto document = readAggregates();
  if (!document) return fail(document.error());
  if (document.value().find(options.name) == nullptr) return fail(noAggregate(options.name));
  auto store = AggregateStore::open();
  if (!store) return fail(store.error());
  AggregateStore file = std::move(store).value();
  if (file.document().find(options.name) == nullptr) return fail(noAggregate(options.name));
  return statusOf(file.write(file.document().textWithout(options.name)));
}

}  // namespace tolvane::ctl
