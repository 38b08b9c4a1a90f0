#include "hal/pipewire/filter_session.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

constexpr std::chrono::milliseconds kAttemptPeriod{50};  // between attempts to make a filter
constexpr std::chrono::milliseconds kPatience{1500};     // for all present channels to be linked

// A port that has had no buffer for so many cycles gets none.
constexpr std::uint32_t kMostEmptyCycles = 20;

/// Our own node's ports of one direction by their index.
using OwnPorts = std::map<std::uint32_t, std::uint32_t>;

OwnPorts ownPorts(const Graph& graph, std::uint32_t nodeId, bool areInputs) {
  OwnPorts ports;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && port.isInput == areInputs) ports[port.index] = id;
  }
  return ports;
}

const ListedDevice* deviceOf(const Channel& channel, const std::vector<ListedDevice>& devices) {
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const ListedDevice& device) {
    return device.isCalled(channel.deviceUid);
  });
  return found == devices.end() ? nullptr : &*found;
}

/// True if any of the nodes that the device's channels were started with is present.
bool hasAnyOfTheNodes(const std::vector<Channel>& started, const std::string& uid,
                      const std::vector<Channel>& current) {
  return std::any_of(started.begin(), started.end(), [&](const Channel& channel) {
    return channel.deviceUid == uid && std::any_of(current.begin(), current.end(), [&](const Channel& other) {
             return other.nodeName == channel.nodeName;
           });
  });
}

const Channel* sameIn(const std::vector<Channel>& current, const Channel& started) {
  const auto found = std::find_if(current.begin(), current.end(),
                                  [&](const Channel& channel) { return channel.isSameAs(started); });
  return found == current.end() ? nullptr : &*found;
}

/// Finds where each channel of the session is now; null if it is absent. A channel seen for the first time is
/// identified by its node from then on.
std::vector<const Channel*> locate(std::vector<Channel>& started, const std::vector<ListedDevice>& devices,
                                   std::vector<Channel> ListedDevice::*direction) {
  std::vector<const Channel*> found;
  for (const Channel& channel : started) {
    const ListedDevice* const device = deviceOf(channel, devices);
    const Channel* now = nullptr;
    if (device != nullptr) {
      const std::vector<Channel>& current = device->*direction;
      if (hasAnyOfTheNodes(started, channel.deviceUid, current)) {
        now = sameIn(current, channel);
      } else if (device->isComplete && channel.place < current.size()) {
        now = &current[channel.place];
      }
    }
    found.push_back(now);
  }
  for (std::size_t i = 0; i < started.size(); ++i) {
    if (found[i] == nullptr || !started[i].nodeName.empty()) continue;
    started[i].nodeName = found[i]->nodeName;
    started[i].index = found[i]->index;
    started[i].name = found[i]->name;
  }
  return found;
}

/// The channels' names. In an aggregate each comes after its member's, because members often have equal names
/// for their channels.
std::vector<std::string> servedNames(const std::vector<Channel>& channels,
                                     const std::vector<AggregateMember>& members) {
  std::vector<std::string> names;
  for (const Channel& channel : channels) {
    const auto member = std::find_if(members.begin(), members.end(), [&](const AggregateMember& candidate) {
      return candidate.uid == channel.deviceUid;
    });
    const bool isMembers = member != members.end() && !channel.name.empty();
    names.push_back(isMembers ? member->name + ": " + channel.name : channel.name);
  }
  return names;
}

std::string latencyText(std::uint32_t frames, std::uint32_t rateHz) {
  return std::to_string(frames) + "/" + std::to_string(rateHz);
}

}  // namespace

FilterSession::FilterSession(const Library& library, const ListedDevice& device, SessionClient& client,
                             std::uint32_t quantumFrames, Task changed)
    : library_(library),
      client_(client),
      changed_(std::move(changed)),
      uid_(device.info.uid),
      members_(device.members),
      quantumFrames_(quantumFrames),
      rateHz_(static_cast<std::uint32_t>(device.info.sampleRateHz)),
      inputs_(device.inputs),
      outputs_(device.outputs),
      runner_(library, client, device.info.inputStreams, device.info.outputStreams),
      links_(library, device.inputs.size() + device.outputs.size(), changed_) {
  eventGate_.open();
}

bool FilterSession::isAnyThere(const std::vector<ListedDevice>& devices) const {
  const auto isThere = [&](const Channel& channel) { return deviceOf(channel, devices) != nullptr; };
  return std::any_of(inputs_.begin(), inputs_.end(), isThere) ||
         std::any_of(outputs_.begin(), outputs_.end(), isThere);
}

void FilterSession::reconcile(Connection& connection, const std::vector<ListedDevice>& devices) {
  if (ended_) return;
  const bool isThere = isAnyThere(devices);
  if (!isThere || (filter_ && filter_->isDead())) takeDown();
  if (!isThere) return;
  if (!filter_) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextAttempt_) return;
    nextAttempt_ = now + kAttemptPeriod;
    patientUntil_ = now + kPatience;
    const Filter::ServedChannels served{servedNames(inputs_, members_), servedNames(outputs_, members_)};
    filter_ = std::make_unique<Filter>(library_, connection.core(), runner_, served,
                                       latencyText(quantumFrames_, rateHz_), changed_);
  }
  followRate();
  if (filter_->nodeId() == SPA_ID_INVALID) return;
  const std::size_t inputs = linkInputs(connection, devices);
  const std::size_t outputs = linkOutputs(connection, devices);
  askAboutRemovedLinks(connection);
  publish(inputs + outputs);
}

/// By now, links whose ports have gone are dropped.
void FilterSession::askAboutRemovedLinks(Connection& connection) {
  if (std::exchange(isAnswered_, false)) links_.confirmRemoved();
  if (isAsking_ || !links_.askAboutRemoved()) return;
  isAsking_ = true;
  connection.settle([this, lives = std::weak_ptr<int>(lives_)](bool answered) {
    if (lives.expired()) return;
    isAsking_ = false;
    isAnswered_ = answered;
    changed_();
  });
}

/// Returns the number of inputs that are present.
std::size_t FilterSession::linkInputs(const Connection& connection,
                                      const std::vector<ListedDevice>& devices) {
  const OwnPorts own = ownPorts(connection.graph(), filter_->nodeId(), true);
  const std::vector<const Channel*> theirs = locate(inputs_, devices, &ListedDevice::inputs);
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const auto port = own.find(static_cast<std::uint32_t>(i));
    if (theirs[i] == nullptr || port == own.end()) {
      links_.drop(i);
    } else {
      links_.want(connection.core(), i, linkEndOf(connection.graph(), theirs[i]->nodeId, theirs[i]->portId),
                  linkEndOf(connection.graph(), filter_->nodeId(), port->second),
                  runner_.emptyCycles(i) >= kMostEmptyCycles);
    }
  }
  return theirs.size() - static_cast<std::size_t>(std::count(theirs.begin(), theirs.end(), nullptr));
}

/// Returns the number of outputs that are present.
std::size_t FilterSession::linkOutputs(const Connection& connection,
                                       const std::vector<ListedDevice>& devices) {
  const OwnPorts own = ownPorts(connection.graph(), filter_->nodeId(), false);
  const std::vector<const Channel*> theirs = locate(outputs_, devices, &ListedDevice::outputs);
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const auto port = own.find(static_cast<std::uint32_t>(i));
    const std::size_t place = inputs_.size() + i;
    if (theirs[i] == nullptr || port == own.end()) {
      links_.drop(place);
    } else {
      links_.want(connection.core(), place, linkEndOf(connection.graph(), filter_->nodeId(), port->second),
                  linkEndOf(connection.graph(), theirs[i]->nodeId, theirs[i]->portId));
    }
  }
  return theirs.size() - static_cast<std::size_t>(std::count(theirs.begin(), theirs.end(), nullptr));
}

void FilterSession::setQuantum(std::uint32_t frames) {
  quantumFrames_ = frames;
  if (filter_) filter_->suggestLatency(latencyText(quantumFrames_, rateHz_));
}

/// The server treats the suggestion as a duration, frames at a rate. At another rate it would be a different
/// number of frames.
void FilterSession::followRate() {
  const std::uint32_t rateHz = runner_.rateHz();
  if (rateHz == 0 || rateHz == rateHz_) return;
  rateHz_ = rateHz;
  const bool isUsersOwn = std::getenv("PIPEWIRE_LATENCY") != nullptr;
  if (!isUsersOwn) setQuantum(quantumFrames_);
}

void FilterSession::takeDown() {
  runner_.setRunning(false);
  links_.dropAll();
  filter_.reset();
  isAnswered_ = false;
  reportRemovedLinks();
  setAlive(false);
}

void FilterSession::end() {
  ended_ = true;
  takeDown();
}

/// `inputs` and `outputs`: the number of links that are up or removed.
bool FilterSession::mayBegin(std::size_t inputs, std::size_t outputs) const {
  // Wait for both directions: a card that comes back brings one after the other.
  const bool hasBoth = (inputs_.empty() || inputs != 0) && (outputs_.empty() || outputs != 0);
  const bool isAll = isWhole_ && (hasBoth || !members_.empty());
  return isAll || std::chrono::steady_clock::now() >= patientUntil_;
}

RemovedLinks FilterSession::removedLinks() const {
  RemovedLinks removed;
  for (std::size_t place = 0; place < inputs_.size() + outputs_.size(); ++place) {
    if (!links_.isRemoved(place)) continue;
    const bool isInput = place < inputs_.size();
    const std::size_t channel = isInput ? place : place - inputs_.size();
    (isInput ? removed.inputs : removed.outputs).push_back(static_cast<UInt32>(channel));
  }
  return removed;
}

void FilterSession::reportRemovedLinks() {
  RemovedLinks removed = removedLinks();
  if (removed == reportedRemoved_) return;
  reportedRemoved_ = std::move(removed);
  if (const CallGate::Pass pass(eventGate_); pass) client_.linksRemoved(reportedRemoved_);
}

/// `wanted`: the number of links that should be up.
void FilterSession::publish(std::size_t wanted) {
  reportRemovedLinks();
  // A removed link counts as up: removing it does not make the device go away.
  const auto settled = [&](std::size_t first, std::size_t count) {
    return links_.ready(first, count) + links_.removed(first, count);
  };
  const std::size_t inputs = settled(0, inputs_.size());
  const std::size_t outputs = settled(inputs_.size(), outputs_.size());
  isWhole_ = inputs + outputs == wanted;
  const bool isAny = inputs + outputs != 0;
  const bool alive = isAny && (isAlive() || mayBegin(inputs, outputs));
  if (alive) runner_.setRunning(true);
  if (!isAny) runner_.setRunning(false);
  wasAlive_ = wasAlive_ || alive;
  setAlive(alive);
}

void FilterSession::setAlive(bool alive) {
  {
    const std::lock_guard lock(mutex_);
    if (alive == alive_) return;
    alive_ = alive;
  }
  aliveChanged_.notify_all();
  if (const CallGate::Pass pass(eventGate_); pass) client_.aliveChanged(alive);
}

bool FilterSession::isAlive() const {
  const std::lock_guard lock(mutex_);
  return alive_;
}

bool FilterSession::waitUntilAlive(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  return aliveChanged_.wait_for(lock, timeout, [&] { return alive_; });
}

void FilterSession::shut() noexcept {
  runner_.shut();
  eventGate_.shut();
}

}  // namespace tolvane::hal::pipewire
