// The sound server as the driver sees it: a list of devices, and sessions on them.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hal/aggregates/aggregate_file.h"
#include "hal/driver/driver.h"
#include "hal/pipewire/config_watch.h"
#include "hal/pipewire/connection.h"
#include "hal/pipewire/device_list.h"
#include "hal/pipewire/filter_session.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

class Server {
 public:
  /// Starts the thread that talks to the server, but does not connect yet. Null if the system has no thread
  /// or descriptor left. [not-io]
  static std::shared_ptr<Server> create(const Library& library);

  /// All sessions must have ended. [not-io]
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// The devices present now; none if there is no server or it does not answer in time. [not-io]
  std::optional<std::vector<DeviceInfo>> devices();

  /// True if a server is there but did not answer the last devices() in time. [not-io]
  [[nodiscard]] bool isSilent();

  struct Started {
    OSStatus status = noErr;
    std::shared_ptr<FilterSession> session;
  };

  /// From now on calls `changed`, on the loop thread, when the list changes, also when the server returns.
  /// [not-io]
  void setObserver(std::function<void()> changed);

  /// Asks for another cycle length of the device, in frames, also while it runs. [not-io]
  void setQuantum(const std::string& uid, std::uint32_t frames);

  /// Starts a session with all channels of the device and waits until it is alive. An aggregate runs with the
  /// members that can be used. Errors: kAudioHardwareBadDeviceError if the device has gone or changed its
  /// streams; kAudioHardwareNotReadyError if the server or the links take too long. [not-io]
  Started start(const DeviceInfo& device, SessionClient& client);

  /// Ends the session. Returns within a second, whatever the server does. After that the client is not called
  /// again. [not-io]
  void end(std::shared_ptr<FilterSession> session);

 private:
  struct Listing;
  struct Starting;

  explicit Server(const Library& library, std::unique_ptr<LoopThread> thread);
  std::shared_ptr<Listing> beginListing();
  void finishListings();
  void loseConnection();
  void reconcile();
  void reconcileSessions();
  void tellOfChanges();
  void scheduleRetry();
  void noteChange();
  void startNow(const DeviceInfo& device, SessionClient& client, Starting& starting);
  [[nodiscard]] std::vector<ListedDevice> plainDevices();
  [[nodiscard]] std::vector<ListedDevice> allDevices();
  [[nodiscard]] std::vector<DeviceInfo> completeDevices();

  const Library& library_;
  std::unique_ptr<LoopThread> thread_;

  // On the loop thread only.
  Connection connection_;
  DeviceList list_;
  AggregateFile aggregates_;
  ConfigWatch aggregatesWatch_;
  std::vector<std::shared_ptr<FilterSession>> sessions_;
  LoopTimer retry_;
  bool changeNoted_ = false;
  std::vector<std::shared_ptr<Listing>> waiting_;  // for the first list of a connection
  bool hasListed_ = false;                         // on this connection
  std::function<void()> observer_;
  std::vector<DeviceInfo> told_;  // the list at the last call of observer_

  std::mutex mutex_;                     // guards unanswered_
  std::shared_ptr<Listing> unanswered_;  // the listing that a hung server has not answered yet
};

}  // namespace tolvane::hal::pipewire
