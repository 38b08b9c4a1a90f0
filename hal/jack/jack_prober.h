#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"
#include "hal/jack/jack_watch.h"

namespace tolvane::hal {

/// Asks the server for its devices, through a watch or else through a client opened for one request. That
/// client is never activated, so it takes no part in the graph.
class JackProber {
 public:
  explicit JackProber(const JackLibrary& library);

  /// From now on asks `asker` first. Must not be called while devices() runs. [not-io]
  void askThrough(JackWatch::Asker asker) { asker_ = std::move(asker); }

  /// The devices. Empty if there is no server, or if the server has not answered within kJackListLimit of the
  /// request. A pending request is not repeated. An answer is valid for 100 ms. [not-io]
  [[nodiscard]] std::vector<DeviceInfo> devices();

  /// True while a request is pending. [not-io]
  [[nodiscard]] bool isSilent() const;

  /// True if it is known within `timeout` whether there is a server; false while the server hangs. [not-io]
  [[nodiscard]] bool answers(std::chrono::milliseconds timeout);

  /// Discards the last answer, and any to a pending request, because something has changed. [not-io]
  void forget();

 private:
  struct Question;
  using Clock = std::chrono::steady_clock;

  void ask(std::unique_lock<std::mutex>& lock);
  bool awaitAnswer(std::unique_lock<std::mutex>& lock, Clock::time_point deadline);

  const JackLibrary& library_;
  JackWatch::Asker asker_;
  std::shared_ptr<Question> question_;  // shared with the asking thread, which a hung server blocks
};

}  // namespace tolvane::hal
