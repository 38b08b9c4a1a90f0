// Builds the device list from the server's graph.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "hal/aggregates/aggregate.h"
#include "hal/driver/device_info.h"
#include "hal/pipewire/device_group.h"
#include "hal/pipewire/graph.h"
#include "hal/support/usb_card.h"

namespace tolvane::hal::pipewire {

/// One channel of a device: how to find it again after the device was away, and where it is now.
struct Channel {
  std::string deviceUid = {};
  std::uint32_t place = 0;    // index among the device's channels of this direction
  std::string nodeName = {};  // empty until its device has been seen
  std::uint32_t index = 0;    // among the node's channels of this direction

  std::uint32_t nodeId = 0;
  std::uint32_t portId = 0;
  std::string portName = {};
  std::string name = {};  // as its owner calls it

  [[nodiscard]] bool isSameAs(const Channel& other) const {
    return index == other.index && nodeName == other.nodeName;
  }
};

/// A device with the ports behind its channels, in order.
struct ListedDevice {
  DeviceInfo info;
  std::vector<Channel> inputs;
  std::vector<Channel> outputs;
  std::vector<Channel> monitors = {};         // what the outputs play
  std::vector<AggregateMember> members = {};  // only of an aggregate; its channels are theirs, in this order
  bool isCard = false;
  bool isMonitor = false;      // the monitor of a device; only aggregates use it
  bool isComplete = false;     // has all its ports; an aggregate: has a member. Only then shown.
  std::string formerUid = {};  // under which earlier versions of this program listed it; empty if the same

  /// True for the uid that an aggregate's file may have for this device.
  [[nodiscard]] bool isCalled(const std::string& uid) const {
    return info.uid == uid || (!formerUid.empty() && formerUid == uid);
  }
};

/// Puts the names of the device's channels into its description.
void describeChannels(ListedDevice& device);

/// Makes one device per card and one per node without a card. Remembers the uid of each, so that no uid
/// passes to another device while its first owner is present. Not thread-safe.
class DeviceList {
 public:
  explicit DeviceList(UsbLookup usb = [](int alsaCard) { return usbCard(alsaCard); })
      : usb_(std::move(usb)) {}

  /// All devices except aggregates, complete or not, in menu order: the device of the default sink first,
  /// then the server's order. A new device is left out until all its nodes have described themselves. No
  /// device gets one of the `reservedNames`. The monitors of the devices follow.
  [[nodiscard]] std::vector<ListedDevice> build(const Graph& graph, std::set<std::string> reservedNames);

  /// True if the last build() left something out that may come within a moment: a card has a node without
  /// ports, or has not told its profiles. After that moment such a card is listed with the rest of its nodes.
  [[nodiscard]] bool isMoreToCome() const { return isMoreToCome_; }

  /// Forgets the uids. Another server counts its objects anew, so a card may get the number that another had.
  void forgetUids() { uids_.clear(); }

  /// Sets the cycle length in frames to ask the server for when the device runs.
  void setQuantum(const std::string& uid, std::uint32_t frames) { quanta_[uid] = frames; }

  /// The cycle length to ask for, in frames; 256 unless set.
  [[nodiscard]] std::uint32_t quantum(const std::string& uid) const;

  /// Fills in the sample rate and the buffer sizes. The buffer size holds unless somebody else in the graph
  /// asks for a smaller one.
  void describeCycle(const GraphClock& clock, DeviceInfo& info) const;

 private:
  std::string uidOf(const DeviceGroup& group);
  ListedDevice listed(const Graph& graph, const DeviceGroup& group);
  bool awaits(std::chrono::steady_clock::time_point seen);
  void forgetAllBut(const std::vector<DeviceGroup>& groups);

  const UsbLookup usb_;
  std::map<std::string, std::string> uids_;      // by the group's key
  std::map<std::string, std::uint32_t> quanta_;  // by uid
  bool isMoreToCome_ = false;
};

}  // namespace tolvane::hal::pipewire
