// One device being routed: keeps our filter linked to the device's ports, however often they come and go.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "hal/driver/call_gate.h"
#include "hal/driver/driver.h"
#include "hal/pipewire/connection.h"
#include "hal/pipewire/cycle_runner.h"
#include "hal/pipewire/device_list.h"
#include "hal/pipewire/filter.h"
#include "hal/pipewire/link_set.h"

namespace tolvane::hal::pipewire {

/// Created, used and destroyed on the loop thread, except where noted. The session keeps the channels that
/// the device had at the start. It identifies each by its node and its index there, so a channel that comes
/// back is the same channel as before. An absent channel has no data. Channels are matched by their order in
/// only two cases: when other nodes have replaced all nodes of a direction, as with another profile of the
/// card, and when an aggregate's member that was absent at the start first appears.
///
/// A link that somebody else removes stays removed, and is reported, until its channel has been away.
///
/// The device comes alive when all of its present channels are linked, and stays alive while any of them is.
/// If some cannot be linked, the device comes alive without them after a while.
class FilterSession {
 public:
  /// Calls `changed` when reconcile() should be called again.
  FilterSession(const Library& library, const ListedDevice& device, SessionClient& client,
                std::uint32_t quantumFrames, Task changed);

  /// Updates filter and links to match the graph. `devices` are the devices present now, without aggregates.
  /// Does nothing after end().
  void reconcile(Connection& connection, const std::vector<ListedDevice>& devices);

  /// Asks for another cycle length, in frames at the graph's current sample rate.
  void setQuantum(std::uint32_t frames);

  /// Removes links and filter, because the server or the device has gone or the session ends.
  void takeDown();

  /// Calls takeDown(); reconcile() does nothing from then on.
  void end();

  [[nodiscard]] const std::string& uid() const noexcept { return uid_; }

  /// The members of an aggregate at the start; empty for any other device.
  [[nodiscard]] const std::vector<AggregateMember>& members() const noexcept { return members_; }

  [[nodiscard]] bool isAlive() const;  // [not-io]

  /// True if the device was alive and is not now: the session waits for it.
  [[nodiscard]] bool isLost() const { return wasAlive_ && !isAlive(); }

  /// True if the device is not alive or a link is missing or paused; reconcile() should then be called again.
  [[nodiscard]] bool isUnfinished() const { return !isWhole_ || links_.isAnyPaused() || !isAlive(); }

  /// Waits until the device is alive; returns false if it is not within `timeout`. [not-io]
  bool waitUntilAlive(std::chrono::milliseconds timeout);

  /// After it returns, the client is not called again. [not-io]
  void shut() noexcept;

 private:
  [[nodiscard]] bool isAnyThere(const std::vector<ListedDevice>& devices) const;
  std::size_t linkInputs(const Connection& connection, const std::vector<ListedDevice>& devices);
  std::size_t linkOutputs(const Connection& connection, const std::vector<ListedDevice>& devices);
  void followRate();
  [[nodiscard]] bool mayBegin(std::size_t inputs, std::size_t outputs) const;
  void askAboutRemovedLinks(Connection& connection);
  [[nodiscard]] RemovedLinks removedLinks() const;
  void reportRemovedLinks();
  void publish(std::size_t wanted);
  void setAlive(bool alive);

  const Library& library_;
  SessionClient& client_;
  Task changed_;
  std::string uid_;
  std::vector<AggregateMember> members_;
  std::uint32_t quantumFrames_;
  std::uint32_t rateHz_;
  std::vector<Channel> inputs_;
  std::vector<Channel> outputs_;
  CycleRunner runner_;
  std::unique_ptr<Filter> filter_;
  LinkSet links_;  // the inputs' places first, then the outputs'
  RemovedLinks reportedRemoved_;
  bool isAsking_ = false;    // the server is asked whether a removed link is all that has gone
  bool isAnswered_ = false;  // it has answered; the graph is up to date
  CallGate eventGate_;
  bool ended_ = false;
  bool wasAlive_ = false;
  bool isWhole_ = false;  // every link between present ports is up
  std::chrono::steady_clock::time_point nextAttempt_;
  std::chrono::steady_clock::time_point patientUntil_;
  std::shared_ptr<int> lives_ = std::make_shared<int>();

  mutable std::mutex mutex_;  // guards alive_
  std::condition_variable aliveChanged_;
  bool alive_ = false;
};

}  // namespace tolvane::hal::pipewire
