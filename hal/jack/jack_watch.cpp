#include "hal/jack/jack_watch.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <utility>

#include "hal/driver/call_gate.h"
#include "hal/driver/time_limits.h"
#include "hal/jack/jack_client.h"
#include "hal/jack/jack_devices.h"
#include "hal/jack/jack_loss.h"
#include "hal/jack/uncancelled.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// How often we look for a missing server, and how long we leave a server alone after it has said that it
/// ends: a client that joins then may keep it from ending.
constexpr auto kLookInterval = 1s;

}  // namespace

class JackWatch::Watcher {
 public:
  Watcher(const JackLibrary& library, std::function<void()> changed)
      : library_(library), changed_(std::move(changed)) {
    gate_.open();
  }

  /// Runs on a thread of its own, until end().
  void work() {
    while (!hasEnded()) {
      Stay stay(*this);
      const bool isThere = connect(stay);
      noteLook(isThere);
      if (isThere) {
        tell();
        awaitLossOrEnd(stay);
        leave(stay);
        tell();
      }
      awaitNextLook();
    }
    const std::lock_guard lock(mutex_);
    over_ = true;
    changedHere_.notify_all();
  }

  void end() {
    gate_.shut();
    std::unique_lock lock(mutex_);
    ended_ = true;
    changedHere_.notify_all();
    // A server that is ending takes long to let a client go, and a hung server lets none go.
    changedHere_.wait_for(lock, kJackLeaveLimit, [this] { return over_; });
  }

  std::optional<std::vector<DeviceInfo>> ask() {
    // PipeWire's libjack answers by itself, whatever the server does.
    if (library_.isPipeWire) return std::nullopt;
    awaitLook();
    const std::lock_guard oneRequest(requesting_);
    if (askable_ == nullptr) return std::vector<DeviceInfo>{};
    // Ports are read from shared memory, which works even while the server hangs. So ask the server something
    // first.
    if (!answers(askable_)) return std::vector<DeviceInfo>{};
    return listJackDevices(library_, askable_);
  }

 private:
  /// One connection to a server, from connect() to leave().
  struct Stay {
    explicit Stay(Watcher& owner) : watcher(owner) {}

    Watcher& watcher;
    JackLoss loss;
    std::atomic<jack_nframes_t> bufferFrames{0};
    std::atomic<bool> lost{false};
    std::atomic<bool> leaving{false};
    std::atomic<jack_client_t*> client{nullptr};  // closed by leave()

    void beginFarewell() noexcept {
      if (!leaving.exchange(true)) JackFarewells::begin();
    }
  };

  static Stay& stayOf(void* argument) noexcept { return *static_cast<Stay*>(argument); }

  bool connect(Stay& stay) {
    jack_status_t status;
    jack_client_t* const client = openJackClient(library_, "Tolvane-watch", status).release();
    if (client == nullptr) return false;
    stay.client = client;
    stay.bufferFrames = library_.getBufferSize(client);
    setCallbacks(client, stay);
    // The server notifies only active clients.
    if (library_.activate(client) != 0) {
      leave(stay);
      return false;
    }
    const std::lock_guard oneRequest(requesting_);
    askable_ = client;
    return true;
  }

  bool answers(jack_client_t* client) const {
    char* const uuid = library_.getUuidForClientName(client, library_.getClientName(client));
    if (uuid != nullptr) library_.free(uuid);
    return uuid != nullptr;
  }

  void setCallbacks(jack_client_t* client, Stay& stay) const {
    constexpr auto kOnPort = uncancelled([](jack_port_id_t port, int registered, void* argument) {
      // The type of a port that has gone is no longer known.
      if (registered == 0 || stayOf(argument).watcher.isPhysical(stayOf(argument), port)) {
        stayOf(argument).watcher.tell();
      }
    });
    library_.setPortRegistrationCallback(client, kOnPort, &stay);
    // jackd tells of a leaving client's ports while they are still there, and of the client when they have
    // gone. PipeWire's libjack would also tell of the clients that ask for devices, and each report would
    // lead to another request, without end.
    if (!library_.isPipeWire) {
      constexpr auto kOnClient = uncancelled([](const char* /*name*/, int registered, void* argument) {
        if (registered == 0) stayOf(argument).watcher.tell();
      });
      library_.setClientRegistrationCallback(client, kOnClient, &stay);
    }
    if (library_.setPropertyChangeCallback != nullptr) {
      constexpr auto kOnProperty = uncancelled(
          [](jack_uuid_t /*subject*/, const char* key, jack_property_change_t /*change*/, void* argument) {
            // No key: all of a subject's properties, or everybody's, have gone.
            if (key == nullptr || std::string_view(key).ends_with("/pretty-name")) {
              stayOf(argument).watcher.tell();
            }
          });
      library_.setPropertyChangeCallback(client, kOnProperty, &stay);
    }
    constexpr auto kOnBufferSize = uncancelled([](jack_nframes_t frames, void* argument) {
      // At every activation the server repeats values that it has told before.
      if (stayOf(argument).bufferFrames.exchange(frames) != frames) stayOf(argument).watcher.tell();
      return 0;
    });
    library_.setBufferSizeCallback(client, kOnBufferSize, &stay);
    // Some servers call only the first of these two, others only the second.
    constexpr auto kOnShutdown =
        uncancelled([](void* argument) { stayOf(argument).watcher.lose(stayOf(argument)); });
    library_.onShutdown(client, kOnShutdown, &stay);
    constexpr auto kOnInfoShutdown = uncancelled(
        [](jack_status_t, const char*, void* argument) { stayOf(argument).watcher.lose(stayOf(argument)); });
    library_.onInfoShutdown(client, kOnInfoShutdown, &stay);
  }

  bool isPhysical(const Stay& stay, jack_port_id_t id) const {
    const jack_port_t* const port = library_.portById(stay.client, id);
    return port == nullptr || (library_.portFlags(port) & JackPortIsPhysical) != 0;
  }

  void lose(Stay& stay) {
    stay.loss.note();
    stay.beginFarewell();
    {
      const std::lock_guard lock(mutex_);
      leftAloneUntil_ = Clock::now() + kLookInterval;
    }
    tell();
    const std::lock_guard lock(mutex_);
    stay.lost = true;
    changedHere_.notify_all();
  }

  void leave(Stay& stay) {
    const std::lock_guard oneRequest(requesting_);
    askable_ = nullptr;
    stay.beginFarewell();
    stay.loss.await();
    library_.deactivate(stay.client);
    stay.loss.await();  // the server may have died just now
    library_.clientClose(stay.client);
    JackFarewells::end();
  }

  void tell() {
    if (const CallGate::Pass pass(gate_); pass) changed_();
  }

  bool hasEnded() {
    const std::lock_guard lock(mutex_);
    return ended_;
  }

  void awaitLossOrEnd(const Stay& stay) {
    std::unique_lock lock(mutex_);
    changedHere_.wait(lock, [&] { return ended_ || stay.lost; });
  }

  void noteLook(bool isThere) {
    const std::lock_guard lock(mutex_);
    ++looks_;
    isKnown_ = isThere;
    isWanted_ = false;
    changedHere_.notify_all();
  }

  void awaitNextLook() {
    std::unique_lock lock(mutex_);
    isKnown_ = Clock::now() < leftAloneUntil_;
    changedHere_.wait_for(lock, kLookInterval, [this] { return ended_ || isWanted_; });
  }

  /// Waits until it is known whether there is a server. If it is not known, the watch looks for one now.
  void awaitLook() {
    std::unique_lock lock(mutex_);
    if (isKnown_) return;
    isWanted_ = true;
    changedHere_.notify_all();
    changedHere_.wait(lock, [this, before = looks_] { return looks_ != before || ended_; });
  }

  const JackLibrary& library_;
  const std::function<void()> changed_;
  CallGate gate_;
  std::mutex requesting_;             // one request at a time on the client's connection
  jack_client_t* askable_ = nullptr;  // guarded by requesting_
  std::mutex mutex_;
  std::condition_variable changedHere_;
  std::uint64_t looks_ = 0;
  bool isKnown_ = false;   // it is known whether there is a server
  bool isWanted_ = false;  // somebody waits for the next look
  Clock::time_point leftAloneUntil_;
  bool ended_ = false;  // asked to end
  bool over_ = false;
};

JackWatch::JackWatch(const JackLibrary& library, std::function<void()> changed)
    : watcher_(std::make_shared<Watcher>(library, std::move(changed))) {
  if (!runDetached("tolvane-jack", [watcher = watcher_] { watcher->work(); })) throw noThreadLeft();
}

JackWatch::Asker JackWatch::asker() const {
  return [watcher = watcher_] { return watcher->ask(); };
}

JackWatch::~JackWatch() {
  watcher_->end();
}

}  // namespace tolvane::hal
