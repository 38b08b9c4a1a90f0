#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>
#include <thread>

#include "ctl/aggregate_choice.h"
#include "ctl/aggregate_command.h"
#include "ctl/aggregate_list.h"
#include "ctl/aggregate_store.h"
#include "ctl/device_property.h"
#include "ctl/messages.h"
#include "engine/core_audio_engine.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

using Members = Result<std::vector<hal::AggregateMember>, Failure>;

std::vector<MemberCandidate> candidates() {
  const CoreAudioEngine engine;
  std::vector<MemberCandidate> devices;
  for (AudioDeviceInfo& info : engine.getAllDevices()) {
    const AudioDeviceID id = info.id;
    const auto transport = deviceProperty<UInt32>(id, kAudioDevicePropertyTransportType);
    devices.push_back({std::move(info), deviceText(id, kAudioDevicePropertyDeviceUID).value_or(""),
                       transport == kAudioDeviceTransportTypeAggregate});
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
    if (isTwice) return Failure{member.value().name + ": is named twice"};
    members.push_back(std::move(member).value());
  }
  return members;
}

/// The sound server may be too busy to be in the first list.
Members findMembers(const std::vector<std::string>& wanted, std::vector<MemberCandidate>& devices) {
  constexpr int kAttempts = 5;
  for (int attempt = 1;; ++attempt) {
    devices = candidates();
    Members members = chooseMembers(devices, wanted);
    const bool isMissing = !members && members.error().status == ExitStatus::noSuchDevice;
    if (!isMissing || attempt == kAttempts) return members;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

std::optional<Failure> refuseName(const hal::AggregateDocument& document, const std::string& name,
                                  const std::vector<MemberCandidate>& devices) {
  if (document.find(name) != nullptr) return Failure{"there is an aggregate called \"" + name + "\" already"};
  const bool isDevices = std::any_of(devices.begin(), devices.end(),
                                     [&](const MemberCandidate& device) { return device.info.name == name; });
  if (isDevices) return Failure{"there is a device called \"" + name + "\" already"};
  return std::nullopt;
}

Failure noAggregate(const std::string& name) {
  return {"no aggregate is called \"" + name + "\"", ExitStatus::noSuchDevice};
}

/// Reports the failure, if there is one.
ExitStatus statusOf(const std::optional<Failure>& failure) {
  return failure ? fail(*failure) : ExitStatus::done;
}

}  // namespace

ExitStatus aggregateListCommand(const AggregateOptions& options) {
  const auto document = readAggregates();
  if (!document) return fail(document.error());
  std::set<std::string> there;
  for (const MemberCandidate& device : candidates()) there.insert(device.uid);
  const auto& aggregates = document.value().aggregates();
  const std::string text =
      options.json ? aggregateJson(aggregates, there) : aggregateTable(aggregates, there);
  std::fputs(text.c_str(), stdout);
  return ExitStatus::done;
}

ExitStatus aggregateCreateCommand(const AggregateOptions& options) {
  if (const std::string why = hal::whyNoAggregateName(options.name); !why.empty()) {
    return fail({why, ExitStatus::usage});
  }
  if (options.devices.size() > hal::kMaxAggregateMembers) {
    return fail({"an aggregate has at most " + std::to_string(hal::kMaxAggregateMembers) + " devices",
                 ExitStatus::usage});
  }
  // A bad file is said first: without it nobody knows which names are taken.
  if (const auto document = readAggregates(); !document) return fail(document.error());
  std::vector<MemberCandidate> devices;
  Members members = findMembers(options.devices, devices);
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
