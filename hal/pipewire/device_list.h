// Makes devices of the server's graph.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "hal/aggregates/aggregate.h"
#include "hal/driver/device_info.h"
#include "hal/pipewire/graph.h"

namespace tolvane::hal::pipewire {

/// One channel of a device: where it is to be found again after the device has been away, and where it is
/// now.
struct Channel {
  std::string deviceUid = {};
  std::uint32_t place = 0;    // among the device's channels of this direction
  std::string nodeName = {};  // empty while nothing of its device has been seen
  std::uint32_t index = 0;    // among the node's channels of this direction

  std::uint32_t nodeId = 0;
  std::uint32_t portId = 0;

  [[nodiscard]] bool isSameAs(const Channel& other) const {
    return index == other.index && nodeName == other.nodeName;
  }
};

/// A device with the ports behind its channels, in order.
struct ListedDevice {
  DeviceInfo info;
  std::vector<Channel> inputs;
  std::vector<Channel> outputs;
  std::vector<AggregateMember> members =
      {};  // of an aggregate, whose channels are theirs, one after the other
  bool isCard = false;
  bool isComplete = false;  // every channel that is there has its port; only then is it shown
};

/// One device per card, one per node without a card. Remembers which identity it gave to what, so that an
/// identity never passes from one thing to another while the first is there. Not thread-safe.
class DeviceList {
 public:
  /// All devices but aggregates, complete or not, in menu order: that of the default sink first, then the
  /// server's order. None has one of the `reservedNames`.
  [[nodiscard]] std::vector<ListedDevice> build(const Graph& graph, std::set<std::string> reservedNames);

  /// Asks for this many frames a cycle when the device runs.
  void setQuantum(const std::string& uid, std::uint32_t frames) { quanta_[uid] = frames; }

  /// What is asked for: 256 where nothing was set.
  [[nodiscard]] std::uint32_t quantum(const std::string& uid) const;

  /// Says what a cycle of the device is, or will be when nobody else in the graph asks for less.
  void describeCycle(const GraphClock& clock, DeviceInfo& info) const;

 private:
  struct Group;
  std::vector<Group> groupsOf(const Graph& graph) const;
  std::string uidOf(const Group& group);
  void forgetAllBut(const std::vector<Group>& groups);

  std::map<std::string, std::string> uids_;      // by the group's key
  std::map<std::string, std::uint32_t> quanta_;  // by uid
};

}  // namespace tolvane::hal::pipewire
