#include "hal/pipewire/aggregate_list.h"

#include <algorithm>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

Aggregate allInterfaces(const std::vector<ListedDevice>& devices) {
  Aggregate all{kAllInterfacesName, {}};
  for (const ListedDevice& device : devices) {
    if (!device.isCard || !device.isComplete) continue;
    all.members.push_back({device.info.uid, device.info.name,
                           static_cast<std::uint32_t>(device.inputs.size()),
                           static_cast<std::uint32_t>(device.outputs.size())});
  }
  return all;
}

/// Appends a stream of `count` channels of the member. Channels that the device lacks now keep their place.
void appendStream(const std::string& uid, std::uint32_t count, const std::vector<Channel>* current,
                  StreamLayout& streams, std::vector<Channel>& channels) {
  if (count == 0) return;
  streams.push_back(count);
  for (std::uint32_t place = 0; place < count; ++place) {
    const bool isThere = current != nullptr && place < current->size();
    channels.push_back(isThere ? (*current)[place] : Channel{.deviceUid = uid, .place = place});
  }
}

ListedDevice listed(const Aggregate& aggregate, const std::vector<ListedDevice>& devices) {
  ListedDevice result;
  result.info.uid = aggregateUid(aggregate.name);
  result.info.name = aggregate.name;
  result.info.transportType = kAudioDeviceTransportTypeAggregate;
  result.members = aggregate.members;
  for (const AggregateMember& member : aggregate.members) {
    const auto found = std::find_if(devices.begin(), devices.end(), [&](const ListedDevice& device) {
      return device.isComplete && device.isCalled(member.uid);
    });
    const bool isThere = found != devices.end();
    result.isComplete = result.isComplete || isThere;
    appendStream(member.uid, member.inputChannels, isThere ? &found->inputs : nullptr,
                 result.info.inputStreams, result.inputs);
    appendStream(member.uid, member.outputChannels, isThere ? &found->outputs : nullptr,
                 result.info.outputStreams, result.outputs);
  }
  describeChannels(result);
  return result;
}

}  // namespace

std::vector<ListedDevice> aggregatesOf(const std::vector<ListedDevice>& devices,
                                       const std::vector<Aggregate>& named, const RunningMembers& running) {
  std::vector<ListedDevice> aggregates;
  const auto add = [&](Aggregate aggregate, std::size_t minMembers) {
    if (const auto* const members = running(aggregateUid(aggregate.name))) {
      aggregate.members = *members;
    } else if (aggregate.members.size() < minMembers) {
      return;
    }
    ListedDevice device = listed(aggregate, devices);
    if (device.isComplete) aggregates.push_back(std::move(device));
  };
  add(allInterfaces(devices), 2);
  for (const Aggregate& aggregate : named) add(aggregate, 1);
  return aggregates;
}

}  // namespace tolvane::hal::pipewire
