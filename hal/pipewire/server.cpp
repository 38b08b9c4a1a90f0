#include "hal/pipewire/server.h"

#include <algorithm>
#include <condition_variable>
#include <set>
#include <utility>

#include "hal/driver/time_limits.h"
#include "hal/pipewire/aggregate_list.h"

namespace tolvane::hal::pipewire {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kRetryPeriod{100};       // while something that a session needs is missing
constexpr milliseconds kRatePeriod{500};        // between checks for a new rate, which no event reports
constexpr milliseconds kReconnectPeriod{1000};  // between attempts to reconnect without sessions

}  // namespace

/// A request for the list of devices.
struct Server::Listing {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  std::optional<std::vector<DeviceInfo>> devices;
  const std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();

  /// The answer may be lost, and not only late. Another question shows it.
  [[nodiscard]] bool isLongOverdue() const {
    return std::chrono::steady_clock::now() - begun > kPipeWireLostListLimit;
  }

  void finish(std::optional<std::vector<DeviceInfo>> found) {
    const std::lock_guard lock(mutex);
    devices = std::move(found);
    done = true;
    changed.notify_all();
  }

  bool wait(milliseconds timeout) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, timeout, [&] { return done; });
  }
};

/// A request to start a session.
struct Server::Starting {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  bool abandoned = false;  // the caller no longer waits: start nothing
  Started result;

  void finish(Started started) {
    result = std::move(started);
    done = true;
    changed.notify_all();
  }
};

std::shared_ptr<Server> Server::create(const Library& library) {
  auto thread = LoopThread::create(library);
  if (!thread) return nullptr;
  std::shared_ptr<Server> server(new Server(library, std::move(thread)));
  return server->thread_->start() ? server : nullptr;
}

Server::Server(const Library& library, std::unique_ptr<LoopThread> thread)
    : library_(library),
      thread_(std::move(thread)),
      connection_(
          library, *thread_, [this] { loseConnection(); }, [this] { noteChange(); }),
      aggregates_(aggregateFilePath()),
      aggregatesWatch_(*thread_, aggregates_.path(), [this] { noteChange(); }),
      retry_(*thread_, [this] {
        connection_.ensure();
        reconcile();
      }) {}

Server::~Server() {
  thread_->stop();
  connection_.disconnect();
}

void Server::loseConnection() {
  for (const auto& session : sessions_) session->takeDown();
  hasListed_ = false;
  list_.forgetUids();
  for (const auto& listing : std::exchange(waiting_, {})) listing->finish(std::nullopt);
  noteChange();
}

void Server::noteChange() {
  if (std::exchange(changeNoted_, true)) return;
  thread_->post([this] {
    changeNoted_ = false;
    reconcile();
  });
}

void Server::reconcile() {
  if (connection_.isReady()) reconcileSessions();
  finishListings();
  tellOfChanges();
  scheduleRetry();
}

void Server::reconcileSessions() {
  if (sessions_.empty()) return;
  const std::vector<ListedDevice> devices = plainDevices();
  for (const auto& session : sessions_) session->reconcile(connection_, devices);
}

void Server::tellOfChanges() {
  if (!observer_) return;
  std::vector<DeviceInfo> devices = completeDevices();
  if (devices == told_) return;
  told_ = std::move(devices);
  observer_();
}

/// Retries what has failed and checks what runs, because not every change causes an event.
void Server::scheduleRetry() {
  const bool isAnyMissing = std::any_of(sessions_.begin(), sessions_.end(),
                                        [](const auto& session) { return session->isUnfinished(); });
  const milliseconds whileIdle = observer_ && !connection_.isConnected() ? kReconnectPeriod : milliseconds{0};
  const milliseconds whileWhole = sessions_.empty() ? whileIdle : kRatePeriod;
  const bool isMoreToCome = list_.isMoreToCome() && (observer_ || !waiting_.empty());
  retry_.every(isAnyMissing || isMoreToCome ? kRetryPeriod : whileWhole);
}

void Server::setObserver(std::function<void()> changed) {
  thread_->post([this, changed = std::move(changed)]() mutable {
    observer_ = std::move(changed);
    reconcile();
  });
}

void Server::setQuantum(const std::string& uid, std::uint32_t frames) {
  thread_->post([this, uid, frames] {
    list_.setQuantum(uid, frames);
    for (const auto& session : sessions_) {
      if (session->uid() == uid) session->setQuantum(frames);
    }
    noteChange();
  });
}

std::vector<ListedDevice> Server::plainDevices() {
  std::set<std::string> reserved{kAllInterfacesName};
  for (const Aggregate& aggregate : aggregates_.aggregates()) reserved.insert(aggregate.name);
  return list_.build(connection_.graph(), std::move(reserved));
}

std::vector<ListedDevice> Server::allDevices() {
  std::vector<ListedDevice> devices = plainDevices();
  const auto running = [&](const std::string& uid) -> const std::vector<AggregateMember>* {
    const auto session = std::find_if(sessions_.begin(), sessions_.end(),
                                      [&](const auto& candidate) { return candidate->uid() == uid; });
    return session == sessions_.end() ? nullptr : &(*session)->members();
  };
  for (ListedDevice& aggregate : aggregatesOf(devices, aggregates_.aggregates(), running)) {
    list_.describeCycle(connection_.graph().clock, aggregate.info);
    devices.push_back(std::move(aggregate));
  }
  return devices;
}

/// Hides a device that a session has lost until the session has it back. A part of the device could otherwise
/// be taken for all of it.
std::vector<DeviceInfo> Server::completeDevices() {
  if (!connection_.isReady()) return {};
  std::vector<DeviceInfo> complete;
  for (ListedDevice& device : allDevices()) {
    const bool isLost = std::any_of(sessions_.begin(), sessions_.end(), [&](const auto& session) {
      return session->uid() == device.info.uid && session->isLost();
    });
    if (device.isComplete && !device.isMonitor && !isLost) complete.push_back(std::move(device.info));
  }
  return complete;
}

std::shared_ptr<Server::Listing> Server::beginListing() {
  auto listing = std::make_shared<Listing>();
  thread_->post([this, listing] {
    if (!connection_.ensure()) return listing->finish(std::nullopt);
    connection_.settle([this, listing](bool answered) {
      if (!answered) return listing->finish(std::nullopt);
      waiting_.push_back(listing);
      finishListings();
      scheduleRetry();
    });
  });
  return listing;
}

/// The first list of a connection waits until it is complete. A program that lists once would otherwise miss
/// a card with a node that cannot be used. Later lists are as they are: changes are told.
void Server::finishListings() {
  if (waiting_.empty()) return;
  const std::vector<DeviceInfo> devices = completeDevices();
  if (list_.isMoreToCome() && !hasListed_) return;
  hasListed_ = true;
  for (const auto& listing : std::exchange(waiting_, {})) listing->finish(devices);
}

std::optional<std::vector<DeviceInfo>> Server::devices() {
  std::shared_ptr<Listing> unanswered;
  {
    const std::lock_guard lock(mutex_);
    unanswered = unanswered_;
  }
  if (unanswered && !unanswered->wait(kPipeWireOverdueListLimit) && !unanswered->isLongOverdue())
    return std::nullopt;
  auto listing = beginListing();
  const bool answered = listing->wait(kPipeWireListLimit);
  const std::lock_guard lock(mutex_);
  unanswered_ = answered ? nullptr : listing;
  if (!answered) return std::nullopt;
  const std::lock_guard listingLock(listing->mutex);
  return listing->devices;
}

bool Server::isSilent() {
  const std::lock_guard lock(mutex_);
  return unanswered_ != nullptr;
}

void Server::startNow(const DeviceInfo& device, SessionClient& client, Starting& starting) {
  const std::vector<ListedDevice> devices = allDevices();
  const auto listed = std::find_if(devices.begin(), devices.end(), [&](const ListedDevice& candidate) {
    return candidate.isComplete && candidate.info.uid == device.uid;
  });
  const bool isAsGiven = listed != devices.end() && listed->info.inputStreams == device.inputStreams &&
                         listed->info.outputStreams == device.outputStreams;
  if (!isAsGiven) return starting.finish({kAudioHardwareBadDeviceError, nullptr});
  auto session = std::make_shared<FilterSession>(library_, *listed, client, list_.quantum(device.uid),
                                                 [this] { noteChange(); });
  sessions_.push_back(session);
  starting.finish({noErr, session});
  reconcile();
}

Server::Started Server::start(const DeviceInfo& device, SessionClient& client) {
  const auto starting = std::make_shared<Starting>();
  thread_->post([this, device, &client, starting] {
    connection_.ensure();
    connection_.settle([this, device, &client, starting](bool answered) {
      const std::lock_guard lock(starting->mutex);
      if (starting->abandoned) return;
      if (!answered) return starting->finish({kAudioHardwareNotReadyError, nullptr});
      startNow(device, client, *starting);
    });
  });
  {
    std::unique_lock lock(starting->mutex);
    if (!starting->changed.wait_for(lock, kSignOfLifeLimit, [&] { return starting->done; })) {
      starting->abandoned = true;
      return {kAudioHardwareNotReadyError, nullptr};
    }
  }
  Started started = starting->result;
  if (started.session && !started.session->waitUntilAlive(kPipeWireStartLimit)) {
    end(std::move(started.session));
    return {kAudioHardwareNotReadyError, nullptr};
  }
  return started;
}

void Server::end(std::shared_ptr<FilterSession> session) {
  // From here on the client is safe, even if the loop thread never runs the task below.
  session->shut();
  thread_->call(
      [this, session = std::move(session)] {
        session->end();
        std::erase(sessions_, session);
        reconcile();
      },
      kPipeWireStopLimit);
}

}  // namespace tolvane::hal::pipewire
