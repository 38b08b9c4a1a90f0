// The connection to the sound server: made when asked for, given up when it fails, made anew later.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>

#include "hal/pipewire/graph.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

class GraphWatch;

/// Everything here is used on the loop thread only, or when that has ended.
class Connection {
 public:
  /// `lost` is called when the server has gone or the connection is of no more use, before anything of it is
  /// destroyed; `changed` some time after the graph has changed.
  Connection(const Library& library, LoopThread& thread, Task lost, Task changed);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Connects unless connected. Fails at once where there is no server, and for some time after a connection
  /// has failed soon after another one. A server that hangs is connected to like any other: only its answers
  /// are missing.
  bool ensure();

  [[nodiscard]] bool isConnected() const noexcept { return core_ != nullptr; }

  /// Gives the connection up; not from within an event of it.
  void disconnect();

  /// True once the server's answers to everything we asked first have come in: the graph is whole.
  [[nodiscard]] bool isReady() const noexcept { return ready_; }

  /// Calls `answered` once everything that the server knew at this moment is in the graph: with true, or with
  /// false when the connection is lost before.
  void settle(std::function<void(bool)> answered);

  /// The server, to make objects with; null while not connected.
  [[nodiscard]] pw_core* core() const noexcept { return core_; }

  /// What is known of the server; empty while not connected.
  [[nodiscard]] const Graph& graph() const noexcept;

 private:
  struct Question {
    int sequence;
    bool isSecond;  // the first answer brings the objects, the second what they said of themselves
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
  std::chrono::milliseconds pause_{0};  // before the next attempt, after a connection that has failed
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tolvane::hal::pipewire
