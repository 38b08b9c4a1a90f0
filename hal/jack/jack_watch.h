#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// Follows the server: that it goes and comes back, that physical ports come and go, and that its cycle
/// length changes. It has a client for that, which has no cycles and so takes no part in the graph, on a
/// thread that a hung server may keep.
class JackWatch {
 public:
  /// `changed` is called on threads of libjack and of its own, with locks of libjack held, from now on.
  /// [not-io]
  JackWatch(const JackLibrary& library, std::function<void()> changed);

  /// When it has returned, `changed` is called no more, and the client has left, unless the server hangs:
  /// then it leaves later. [not-io]
  ~JackWatch();
  JackWatch(const JackWatch&) = delete;
  JackWatch& operator=(const JackWatch&) = delete;

  /// Asks the server for its devices with the client that is there, and has one made where there is none: a
  /// server that is ending itself takes the coming and going of clients badly, and is left alone for a
  /// second. None with PipeWire's libjack, which answers by itself. Blocks while the server hangs. It
  /// outlives the watch. [not-io]
  using Asker = std::function<std::optional<std::vector<DeviceInfo>>()>;
  [[nodiscard]] Asker asker() const;

 private:
  class Watcher;

  std::shared_ptr<Watcher> watcher_;  // shared with its thread
};

}  // namespace tolvane::hal
