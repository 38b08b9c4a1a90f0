#include "hal/pipewire/filter_session.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

constexpr std::chrono::milliseconds kAttemptPeriod{50};  // between attempts that a server refuses

/// Our own node's ports of one direction by their index.
using OwnPorts = std::map<std::uint32_t, std::uint32_t>;

OwnPorts ownPorts(const Graph& graph, std::uint32_t nodeId, bool areInputs) {
  OwnPorts ports;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && port.isInput == areInputs) ports[port.index] = id;
  }
  return ports;
}

/// Where each of the channels that a device was started with is now; null for one that is away.
std::vector<const Channel*> locate(const std::vector<Channel>& started, const std::vector<Channel>& current) {
  std::vector<const Channel*> found(started.size(), nullptr);
  bool isAnyOfTheSameNodes = false;
  for (std::size_t i = 0; i < started.size(); ++i) {
    for (const Channel& channel : current) {
      isAnyOfTheSameNodes = isAnyOfTheSameNodes || channel.nodeName == started[i].nodeName;
      if (channel.isSameAs(started[i])) found[i] = &channel;
    }
  }
  if (isAnyOfTheSameNodes) return found;
  for (std::size_t i = 0; i < std::min(started.size(), current.size()); ++i) found[i] = &current[i];
  return found;
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
      quantumFrames_(quantumFrames),
      rateHz_(static_cast<std::uint32_t>(device.info.sampleRateHz)),
      inputs_(device.inputs),
      outputs_(device.outputs),
      runner_(library, client, device.inputs.size(), device.outputs.size()),
      links_(library, device.inputs.size() + device.outputs.size(), changed_) {
  eventGate_.open();
}

void FilterSession::reconcile(const Connection& connection, const ListedDevice* device) {
  if (ended_) return;
  if (device == nullptr || (filter_ && filter_->isDead())) takeDown();
  if (device == nullptr) return;
  if (!filter_) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextAttempt_) return;
    nextAttempt_ = now + kAttemptPeriod;
    filter_ = std::make_unique<Filter>(library_, connection.core(), runner_, inputs_.size(), outputs_.size(),
                                       latencyText(quantumFrames_, rateHz_), changed_);
  }
  if (filter_->nodeId() == SPA_ID_INVALID) return;
  const std::size_t inputs = linkInputs(connection, *device);
  const std::size_t outputs = linkOutputs(connection, *device);
  publish(inputs + outputs);
}

/// Returns how many of the inputs are there to be linked.
std::size_t FilterSession::linkInputs(const Connection& connection, const ListedDevice& device) {
  const OwnPorts own = ownPorts(connection.graph(), filter_->nodeId(), true);
  const std::vector<const Channel*> theirs = locate(inputs_, device.inputs);
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const auto port = own.find(static_cast<std::uint32_t>(i));
    if (theirs[i] == nullptr || port == own.end()) {
      links_.drop(i);
    } else {
      links_.want(connection.core(), i, {theirs[i]->nodeId, theirs[i]->portId},
                  {filter_->nodeId(), port->second});
    }
  }
  return theirs.size() - static_cast<std::size_t>(std::count(theirs.begin(), theirs.end(), nullptr));
}

/// Returns how many of the outputs are there to be linked.
std::size_t FilterSession::linkOutputs(const Connection& connection, const ListedDevice& device) {
  const OwnPorts own = ownPorts(connection.graph(), filter_->nodeId(), false);
  const std::vector<const Channel*> theirs = locate(outputs_, device.outputs);
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const auto port = own.find(static_cast<std::uint32_t>(i));
    const std::size_t place = inputs_.size() + i;
    if (theirs[i] == nullptr || port == own.end()) {
      links_.drop(place);
    } else {
      links_.want(connection.core(), place, {filter_->nodeId(), port->second},
                  {theirs[i]->nodeId, theirs[i]->portId});
    }
  }
  return theirs.size() - static_cast<std::size_t>(std::count(theirs.begin(), theirs.end(), nullptr));
}

void FilterSession::setQuantum(std::uint32_t frames) {
  quantumFrames_ = frames;
  if (filter_) filter_->suggestLatency(latencyText(quantumFrames_, rateHz_));
}

void FilterSession::takeDown() {
  runner_.setRunning(false);
  links_.dropAll();
  filter_.reset();
  setAlive(false);
}

void FilterSession::end() {
  ended_ = true;
  takeDown();
}

/// `wanted`: links that are to come up.
void FilterSession::publish(std::size_t wanted) {
  const std::size_t inputs = links_.ready(0, inputs_.size());
  const std::size_t outputs = links_.ready(inputs_.size(), outputs_.size());
  const bool hasEachDirection = (inputs_.empty() || inputs != 0) && (outputs_.empty() || outputs != 0);
  // It begins whole; then it goes on with what there is.
  const bool alive = hasEachDirection && (isAlive() || inputs + outputs == wanted);
  if (alive) runner_.setRunning(true);
  if (inputs + outputs == 0) runner_.setRunning(false);
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
