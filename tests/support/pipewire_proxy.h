// A way to a private PipeWire daemon on which things go wrong.
#pragma once

#include <cstdint>
#include <memory>

namespace tolvane::test {

/// Takes connections at a socket of its own and hands every message on to the daemon or from it, unchanged
/// but for what a test asks for. Clients that connect while it lives come by it: it sets PIPEWIRE_REMOTE.
/// Made after the server, and after the clients that are to have nothing to do with it. Every failure throws
/// std::runtime_error. One thread at a time.
class PipeWireProxy {
 public:
  PipeWireProxy();
  ~PipeWireProxy();
  PipeWireProxy(const PipeWireProxy&) = delete;
  PipeWireProxy& operator=(const PipeWireProxy&) = delete;

  /// Gives the next piece of memory that the daemon shares with a client another number than its own, so that
  /// both count differently from then on.
  void misnumberNextMemory();

  /// Has the daemon refuse clients every link to this node.
  void refuseLinksTo(std::uint32_t nodeId);

  /// Sends the client a message that cannot be one.
  void sendNonsense();

  /// What was asked for once has been done.
  [[nodiscard]] bool isDone() const;

  /// How many connections there have been.
  [[nodiscard]] unsigned connections() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
