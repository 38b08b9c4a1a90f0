#pragma once

#include <chrono>
#include <optional>

#include "ctl/control/control.h"

namespace tolvane::ctl {

/// A way for clients to reach the control model, which is served between two sleeps of the run. [main-thread]
///
/// No call waits for anything. receive() and send() each work for about a millisecond at most, so that
/// neither holds up a publication; what is left is done in the next turn, which is then due at once.
class Door : public control::Listener {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// For poll(): readable when receive() has something to do.
  [[nodiscard]] virtual int descriptor() const noexcept = 0;
  /// Takes what has come and executes it on the model.
  virtual void receive(Time now) = 0;
  /// Sends answers and events.
  virtual void send(Time now) = 0;
  /// When the next turn is due even if nothing comes; none: never.
  [[nodiscard]] virtual std::optional<Time> due(Time now) const = 0;
};

}  // namespace tolvane::ctl
