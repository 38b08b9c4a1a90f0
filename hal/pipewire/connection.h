// The connection to the sound server. It opens on demand, ends when it fails, and can be opened again later.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>

#include "hal/pipewire/graph.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

class GraphWatch;

/// Use only on the loop thread, or after that thread has ended.
class Connection {
 public:
  /// Calls `lost` when the connection ends, before any of its objects is destroyed. Calls `changed` when the
  /// connection becomes ready, and some time after the graph has changed.
  Connection(const Library& library, LoopThread& thread, Task lost, Task changed);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Connects unless connected. Returns false at once if no server is running. After two failures in quick
  /// succession it also returns false until a pause has passed. A server that hangs accepts the connection,
  /// but does not answer.
  bool ensure();

  [[nodiscard]] bool isConnected() const noexcept { return core_ != nullptr; }

  /// Ends the connection. Must not be called from within one of its events.
  void disconnect();

  /// True once the server has answered our initial requests: the graph is complete.
  [[nodiscard]] bool isReady() const noexcept { return ready_; }

  /// Calls `answered(true)` once the graph contains everything that the server knew at the time of this call.
  /// Calls `answered(false)` if the connection is lost before that, or at once if there is none.
  void settle(std::function<void(bool)> answered);

  /// The server, for creating objects; null while not connected.
  [[nodiscard]] pw_core* core() const noexcept { return core_; }

  /// The known part of the server's graph; empty while not connected.
  [[nodiscard]] const Graph& graph() const noexcept;

 private:
  struct Question {
    int sequence;
    bool isSecond;  // the first answer brings the objects, the second their details
    std::function<void(bool)> answered;
  };

  void onDone(std::uint32_t id, int sequence);
  void onError(std::uint32_t id, int result);
  void onMemory(std::uint32_t id, int descriptor);
  void giveUp();
  void delayNextAttempt();
  void ask(bool isSecond, std::function<void(bool)> answered);

  static const pw_core_events kCoreEvents;

  const Library& library_;
  LoopThread& thread_;
  Task lost_;
  Task changed_;
  pw_context* context_ = nullptr;
  pw_core* core_ = nullptr;
  spa_hook coreHook_{};
  std::unique_ptr<GraphWatch> watch_;
  std::deque<Question> questions_;
  bool ready_ = false;
  bool broken_ = false;
  std::chrono::steady_clock::time_point made_;
  std::chrono::steady_clock::time_point nextAttempt_;
  std::chrono::milliseconds pause_{0};  // to wait after the next failure
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tolvane::hal::pipewire
