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

/// Asks the server for its devices: through a watch, or else with a client that is there for the question
/// alone and never activated, so that it takes no part in the graph.
class JackProber {
 public:
  explicit JackProber(const JackLibrary& library);

  /// Asks through this one from now on, where that answers; not while devices() runs. [not-io]
  void askThrough(JackWatch::Asker asker) { asker_ = std::move(asker); }

  /// The devices; none when there is no server, or when it has not answered 140 ms after it was asked. A
  /// question that is still open is not asked again, and an answer serves for 100 ms. [not-io]
  [[nodiscard]] std::vector<DeviceInfo> devices();

  /// The last question is still open. [not-io]
  [[nodiscard]] bool isSilent() const;

  /// Whether the server, or there being none, is known within `timeout`: false while it hangs. [not-io]
  [[nodiscard]] bool answers(std::chrono::milliseconds timeout);

  /// What was answered before serves no longer: something has changed. [not-io]
  void forget();

 private:
  struct Question;
  using Clock = std::chrono::steady_clock;

  void ask(std::unique_lock<std::mutex>& lock);
  bool awaitAnswer(std::unique_lock<std::mutex>& lock, Clock::time_point deadline);

  const JackLibrary& library_;
  JackWatch::Asker asker_;
  std::shared_ptr<Question> question_;  // shared with the asking thread, which a hung server keeps
};

}  // namespace tolvane::hal
