// What goes between the thread that serves the network and the main thread, which owns the model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

#include "ctl/control/answer.h"
#include "ctl/control/command.h"
#include "ctl/control/json.h"
#include "ctl/process/wake_pipe.h"

namespace tolvane::ctl::http {

/// A connection; never used twice. 0: all that subscribe.
using ClientNumber = std::uint64_t;

/// Some requests of one text.
struct Asked {
  control::RequestBundle requests;
  bool isBundle = false;
};
/// The client is gone.
struct Gone {};
struct FromClient {
  ClientNumber client = 0;
  std::variant<Asked, Gone> what;
};

struct Answered {
  control::Command command;
  control::RequestId id;
  control::Answer answer;
};
/// A whole Asked has been executed.
struct Executed {};
using SharedEvent = std::shared_ptr<const control::Event>;
/// Events were lost: all that subscribe are to be dropped.
struct DropAll {};
struct ToClient {
  ClientNumber client = 0;
  std::variant<Answered, control::RequestError, Executed, SharedEvent, DropAll> what;
};

/// Two queues, in order. Nobody waits for anybody but for the moment of a copy. [any-thread]
class Exchange {
 public:
  /// For poll(): readable when there is something from a client.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }
  /// Wakes the main thread.
  void send(FromClient message);
  [[nodiscard]] std::optional<FromClient> nextFromClient();

  void send(ToClient message);
  /// The next one; none: nothing waits.
  [[nodiscard]] std::optional<ToClient> nextToClient();
  [[nodiscard]] std::size_t countToClients() const;

 private:
  WakePipe wake_;
  mutable std::mutex mutex_;
  std::deque<FromClient> fromClients_;
  std::deque<ToClient> toClients_;
};

}  // namespace tolvane::ctl::http
