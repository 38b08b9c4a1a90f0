// Plays the test signal into one machine's graph and listens in the other's, so that both ends of the way are
// known to the frame.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "support/pipewire_client.h"

namespace tolvane::test {

/// A node with ports for the first channels of the test signal. It plays silence with single pulses, or the
/// tones.
class Player {
 public:
  Player(PipeWireClient& client, const std::string& nodeName, unsigned channels);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  /// Plays one pulse on all channels in the next cycle, and silence after it. Returns when the pulse starts,
  /// on the machine's monotonic clock.
  [[nodiscard]] std::uint64_t playPulse();

  void playSilence();
  void playTones();

  struct State;

 private:
  std::unique_ptr<State> state_;
};

/// A node with one input port.
class Listener {
 public:
  Listener(PipeWireClient& client, const std::string& nodeName);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// Forgets what it has heard.
  void reset();

  /// When the loudest sample since the last reset was heard, on the machine's monotonic clock. None until a
  /// pulse has been heard to its end.
  [[nodiscard]] std::optional<std::uint64_t> heardPulse() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
