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

/// Made, used and destroyed on the loop thread but for what says otherwise. The channels are those that the
/// device had when it was started, each known by its place in a node: what comes back is the same channel as
/// before, and what is away is without data. Only when all the nodes of a direction have been replaced by
/// others, as by another profile of the card, do channels go by their order; and those of an aggregate's
/// member that was not there at the start, when it first comes.
///
/// The device comes alive when all that is there of it is linked, and goes on while any of it is. What cannot
/// be linked is waited for some time; then the device comes alive with the rest.
class FilterSession {
 public:
  /// `changed` is called when reconcile() has something new to look at.
  FilterSession(const Library& library, const ListedDevice& device, SessionClient& client,
                std::uint32_t quantumFrames, Task changed);

  /// Brings filter and links to what the graph now allows. `devices` are those that are there now, but for
  /// aggregates. Does nothing once the session has ended.
  void reconcile(const Connection& connection, const std::vector<ListedDevice>& devices);

  /// Asks for another cycle length, in frames at whatever rate the graph has.
  void setQuantum(std::uint32_t frames);

  /// The server is gone, or the session is to make nothing more: takes links and filter down.
  void takeDown();

  /// takeDown(), for good.
  void end();

  [[nodiscard]] const std::string& uid() const noexcept { return uid_; }

  /// What an aggregate was made of when it was started; none of any other device.
  [[nodiscard]] const std::vector<AggregateMember>& members() const noexcept { return members_; }

  [[nodiscard]] bool isAlive() const;  // [not-io]

  /// It has been alive and is not: it waits for its device.
  [[nodiscard]] bool isLost() const { return wasAlive_ && !isAlive(); }

  /// Something of it has not come up, so that reconcile() is to be called again.
  [[nodiscard]] bool isUnfinished() const { return !isWhole_ || !isAlive(); }

  /// Waits until the device runs; false when it does not within `timeout`. [not-io]
  bool waitUntilAlive(std::chrono::milliseconds timeout);

  /// When it has returned, the client is called no more. [not-io]
  void shut() noexcept;

 private:
  [[nodiscard]] bool isAnyThere(const std::vector<ListedDevice>& devices) const;
  std::size_t linkInputs(const Connection& connection, const std::vector<ListedDevice>& devices);
  std::size_t linkOutputs(const Connection& connection, const std::vector<ListedDevice>& devices);
  void followRate();
  [[nodiscard]] bool mayBegin(std::size_t inputs, std::size_t outputs) const;
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
  CallGate eventGate_;
  bool ended_ = false;
  bool wasAlive_ = false;
  bool isWhole_ = false;  // all links that can be there are there
  std::chrono::steady_clock::time_point nextAttempt_;
  std::chrono::steady_clock::time_point patientUntil_;

  mutable std::mutex mutex_;  // guards alive_
  std::condition_variable aliveChanged_;
  bool alive_ = false;
};

}  // namespace tolvane::hal::pipewire
