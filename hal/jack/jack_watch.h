#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// Watches the server, its physical ports and its cycle length for changes. It uses a client of its own,
/// which has no cycles and so takes no part in the graph. The client lives on a thread that a hung server may
/// block.
class JackWatch {
 public:
  /// From now on calls `changed`, on libjack's threads and its own, with locks of libjack held. [not-io]
  JackWatch(const JackLibrary& library, std::function<void()> changed);

  /// After it returns, `changed` is not called again. The client has also left the server, or leaves it later
  /// if the server takes too long. [not-io]
  ~JackWatch();
  JackWatch(const JackWatch&) = delete;
  JackWatch& operator=(const JackWatch&) = delete;

  /// Asks the server for its devices through the watch's client. If there is no client, the watch looks for
  /// the server at once, except in the second after a server has said that it ends: clients that come and go
  /// may keep such a server from ending. The answer is none with PipeWire's libjack, which would answer even
  /// if the server does not. Blocks while the server hangs. May outlive the watch. [not-io]
  using Asker = std::function<std::optional<std::vector<DeviceInfo>>()>;
  [[nodiscard]] Asker asker() const;

 private:
  class Watcher;

  std::shared_ptr<Watcher> watcher_;  // shared with its thread
};

}  // namespace tolvane::hal
