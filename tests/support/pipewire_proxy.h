// A proxy that makes faults on the connection to a private PipeWire daemon.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tolvane::test {

/// Accepts connections on its own socket and forwards every message between client and daemon. Messages are
/// unchanged except for the faults that a test asks for. It sets PIPEWIRE_REMOTE, so clients that connect
/// during its lifetime go through it. Construct it after the server, and after clients that must not use it.
/// Every failure throws std::runtime_error. Use from one thread at a time.
class PipeWireProxy {
 public:
  PipeWireProxy();
  ~PipeWireProxy();
  PipeWireProxy(const PipeWireProxy&) = delete;
  PipeWireProxy& operator=(const PipeWireProxy&) = delete;

  /// Changes the number of the next memory block that the daemon shares with a client, so that client and
  /// daemon number the blocks differently from then on.
  void misnumberNextMemory();

  /// Drops the daemon's next answer to a question about its state.
  void loseNextAnswer();

  /// Makes the daemon refuse every link to this node.
  void refuseLinksTo(std::uint32_t nodeId);

  /// Sends the client an invalid message.
  void sendNonsense();

  /// Sends the client an error of the server itself. `result` is a negative errno.
  void sendCoreError(int result);

  /// From now on changes about one in `rarity` of the daemon's messages to the clients, as the seed has it:
  /// numbers, counts, sizes, texts, descriptors. Call it before the first connection.
  void distort(std::uint64_t seed, unsigned rarity);

  /// Closes every connection, and forwards later ones unchanged.
  void endDistortion();

  /// True if the one-time faults that were asked for have been made.
  [[nodiscard]] bool isDone() const;

  /// How the clients' requests for links have named the ports so far.
  [[nodiscard]] std::vector<std::string> linkPorts() const;

  /// The number of connections so far.
  [[nodiscard]] unsigned connections() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
