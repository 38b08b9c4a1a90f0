#include "hal/pipewire/device_list.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

/// The name without the number that a session manager appends for another card of the same name: ".2".
std::string withoutOrder(const std::string& name) {
  const std::size_t end = name.find_last_not_of("0123456789");
  const bool hasNumber = end != std::string::npos && end + 1 < name.size() && name[end] == '.';
  return hasNumber ? name.substr(0, end) : name;
}

constexpr std::uint32_t kSuggestedQuantumFrames = 256;

/// For the session manager to set a node's ports up, or to tell a card's profiles.
constexpr std::chrono::milliseconds kSessionManagersTime{500};

/// Appends the node's channels of one direction; returns whether it has any and all have their ports.
bool appendChannels(const Graph& graph, std::uint32_t nodeId, const GraphNode& node, bool ofInputPorts,
                    std::vector<Channel>& channels) {
  const std::size_t before = channels.size();
  std::size_t ports = 0;
  for (const auto& [portId, port] : graph.ports) {
    if (port.nodeId != nodeId || port.isInput != ofInputPorts) continue;
    ++ports;
    if (!port.isAudio) continue;
    channels.push_back({.nodeName = node.name,
                        .index = port.index,
                        .nodeId = nodeId,
                        .portId = portId,
                        .portName = port.name,
                        .name = port.channelName});
  }
  std::sort(channels.begin() + static_cast<std::ptrdiff_t>(before), channels.end(),
            [](const Channel& a, const Channel& b) { return a.index < b.index; });
  const std::size_t found = channels.size() - before;
  // A node may announce more channels than the server makes ports for it; no more ports come then.
  const bool isAllMade = ports == (ofInputPorts ? node.inputPorts : node.outputPorts);
  return found != 0 && (found == node.channels || isAllMade);
}

void addAlsaCard(const GraphNode& node, DeviceInfo& info) {
  const auto known = std::find(info.alsaCards.begin(), info.alsaCards.end(), node.alsaCard);
  if (node.alsaCard && known == info.alsaCards.end()) info.alsaCards.push_back(*node.alsaCard);
}

/// The monitor of the device. Complete if every node with outputs has all ports for it.
ListedDevice monitorOf(const ListedDevice& device) {
  ListedDevice monitor;
  monitor.info.uid = monitorUid(device.info.uid);
  monitor.info.name = monitorUid(device.info.name);
  monitor.inputs = device.monitors;
  monitor.isMonitor = true;
  monitor.isComplete = device.info.monitorChannels != 0;
  return monitor;
}

void placeChannels(ListedDevice& device) {
  for (std::vector<Channel>* const channels : {&device.inputs, &device.outputs}) {
    for (std::size_t place = 0; place < channels->size(); ++place) {
      (*channels)[place].deviceUid = device.info.uid;
      (*channels)[place].place = static_cast<std::uint32_t>(place);
    }
  }
}

void makeNamesDistinct(std::vector<ListedDevice>& devices, std::set<std::string> taken) {
  for (ListedDevice& device : devices) {
    const std::string described = device.info.name;
    for (int number = 2; !taken.insert(device.info.name).second; ++number) {
      device.info.name = described + " (" + std::to_string(number) + ")";
    }
  }
}

}  // namespace

void describeChannels(ListedDevice& device) {
  const auto describe = [](const std::vector<Channel>& channels, std::vector<ChannelInfo>& infos) {
    infos.clear();
    for (const Channel& channel : channels)
      infos.push_back({channel.name, channel.nodeName, channel.portName});
  };
  describe(device.inputs, device.info.inputs);
  describe(device.outputs, device.info.outputs);
}

std::string DeviceList::uidOf(const DeviceGroup& group) {
  const auto known = uids_.find(group.key);
  if (known != uids_.end()) return known->second;
  // A card without a serial number of its own is known by the place where it is plugged in: the server calls
  // cards of one kind by the order in which it finds them.
  std::string uid = "pipewire:" + group.lastingName();
  if (const std::string place = group.placeOfNamesake(usb_); !place.empty()) {
    uid = "pipewire:" + withoutOrder(group.lastingName()) + "@" + place;
  }
  // The later of two devices with the same name gets its serial number in its uid. The server never reuses
  // that number, so no other device can come back under this uid.
  const auto isTaken = [&](const auto& entry) { return entry.second == uid; };
  if (std::any_of(uids_.begin(), uids_.end(), isTaken)) uid += "#" + std::to_string(group.serial());
  uids_.emplace(group.key, uid);
  return uid;
}

void DeviceList::forgetAllBut(const std::vector<DeviceGroup>& groups) {
  std::set<std::string> present;
  for (const DeviceGroup& group : groups) present.insert(group.key);
  std::erase_if(uids_, [&](const auto& entry) { return !present.contains(entry.first); });
}

std::uint32_t DeviceList::quantum(const std::string& uid) const {
  const auto set = quanta_.find(uid);
  return set != quanta_.end() ? set->second : kSuggestedQuantumFrames;
}

void DeviceList::describeCycle(const GraphClock& clock, DeviceInfo& info) const {
  info.sampleRateHz = clock.forcedRateHz > 0.0 ? clock.forcedRateHz : clock.rateHz;
  if (clock.forcedQuantum != 0) {
    info.bufferFrames = clock.forcedQuantum;
    return;
  }
  info.minBufferFrames = clock.minQuantum;
  info.maxBufferFrames = std::max(clock.minQuantum, clock.maxQuantum);
  info.bufferFrames = std::clamp(quantum(info.uid), info.minBufferFrames, info.maxBufferFrames);
}

/// True for a moment after `seen`, in which there may be more to come.
bool DeviceList::awaits(std::chrono::steady_clock::time_point seen) {
  const bool isSoon = std::chrono::steady_clock::now() - seen < kSessionManagersTime;
  isMoreToCome_ = isMoreToCome_ || isSoon;
  return isSoon;
}

ListedDevice DeviceList::listed(const Graph& graph, const DeviceGroup& group) {
  ListedDevice device;
  device.isComplete = true;
  bool hasAllMonitors = true;
  for (const DeviceGroup::Member& member : group.members) {
    const GraphNode& node = *member.node;
    addAlsaCard(node, device.info);
    // The session manager gives a node its ports. It gives none to a node that cannot be opened. Such a node
    // does not stand in the way of the card's others.
    const bool isUnusable = node.hasAnswered && node.inputPorts + node.outputPorts == 0 && group.isCard();
    if (isUnusable && !awaits(node.seen)) continue;
    if (givesInputs(node) && !appendChannels(graph, member.id, node, false, device.inputs)) {
      device.isComplete = false;
    }
    if (givesOutputs(node) && !appendChannels(graph, member.id, node, true, device.outputs)) {
      device.isComplete = false;
    }
    if (givesMonitors(node) && !appendChannels(graph, member.id, node, false, device.monitors)) {
      hasAllMonitors = false;
    }
  }
  device.isComplete = device.isComplete && !(device.inputs.empty() && device.outputs.empty());
  device.info.uid = uidOf(group);
  const std::string name = group.lastingName();
  const bool isByPlace = device.info.uid.starts_with("pipewire:" + withoutOrder(name) + "@");
  if (isByPlace) device.formerUid = "pipewire:" + name;
  device.info.name = group.description();
  device.info.transportType = kAudioDeviceTransportTypePipeWire;
  device.info.inputStreams.assign(device.inputs.size(), 1);
  device.info.outputStreams.assign(device.outputs.size(), 1);
  device.isCard = group.isCard();
  if (hasAllMonitors) device.info.monitorChannels = static_cast<std::uint32_t>(device.monitors.size());
  if (group.card != nullptr && group.card->hasProfiles && !group.card->profile) awaits(group.card->seen);
  device.info.proAudioCommand = group.proAudioCommand();
  placeChannels(device);
  describeChannels(device);
  describeCycle(graph.clock, device.info);
  return device;
}

std::vector<ListedDevice> DeviceList::build(const Graph& graph, std::set<std::string> reservedNames) {
  const std::vector<DeviceGroup> groups = deviceGroups(graph);
  forgetAllBut(groups);
  isMoreToCome_ = false;
  std::vector<ListedDevice> devices;
  for (const DeviceGroup& group : groups) {
    // The uid is chosen once, when all the nodes of a device have described themselves. Nodes that join later
    // do not change it.
    if (uids_.contains(group.key) || group.hasAnswered()) devices.push_back(listed(graph, group));
  }
  makeNamesDistinct(devices, std::move(reservedNames));
  for (std::size_t number = 0, count = devices.size(); number < count; ++number) {
    if (devices[number].monitors.empty()) continue;
    devices.push_back(monitorOf(devices[number]));
    placeChannels(devices.back());
  }
  return devices;
}

}  // namespace tolvane::hal::pipewire
