// A private PipeWire daemon with cards of the test's choosing: no D-Bus, no session manager, no hardware.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tolvane::test {

/// Properties of an object of the server.
using PipeWireProperties = std::map<std::string, std::string>;

/// A card, or a node that is none. Its inputs are a virtual source that can be fed, its outputs a sink that
/// can be listened to.
struct PipeWireCard {
  std::string name;  // of its nodes, followed by ".source" and ".sink"
  unsigned inputs = 0;
  unsigned outputs = 0;
  std::string description = {};         // empty: the name
  std::optional<unsigned> cardId = {};  // its nodes are those of one card
  bool isDuplexNode = false;            // one node that gives back what it is sent, instead of two
  std::string alsaPcm = {};             // a sound card's PCM ("hw:5"), instead of nodes of nothing
};

/// The nodes that make up the card, as the adapter factory takes them, for the server that was made last.
[[nodiscard]] std::vector<PipeWireProperties> nodesOf(const PipeWireCard& card);

/// What drives the cards.
enum class PipeWirePace {
  realTime,  // a driver by the machine's clock, at 48000 Hz
  slow,  // the same with cycles of 256 frames a second long, so that no stall of the machine makes one late
  patient,  // a driver that begins each cycle when all have finished the last: fast, and nobody is ever late
};

/// Whether the servers of this version interrupt the audio when the quantum changes: from 1.4 on they make
/// all buffers anew.
[[nodiscard]] bool isSilentAtAQuantumChange();

/// Runs from its construction to its destruction, or at the most as long as the test does. Sets
/// XDG_RUNTIME_DIR, so that every client of this process finds this server and no other, and XDG_CONFIG_HOME.
/// Every failure throws std::runtime_error.
class PipeWireServer {
 public:
  explicit PipeWireServer(const std::vector<PipeWireCard>& cards, PipeWirePace pace = PipeWirePace::realTime);
  ~PipeWireServer();
  PipeWireServer(const PipeWireServer&) = delete;
  PipeWireServer& operator=(const PipeWireServer&) = delete;

  void kill();   // as by a crash
  void start();  // after kill()
  void hang();   // stops the process, so that it answers nothing
  void unhang();

  [[nodiscard]] pid_t pid() const noexcept { return pid_; }

  /// Not there before somebody makes it.
  [[nodiscard]] std::string configFolder() const { return folder_ + "/config"; }

 private:
  std::string folder_;
  std::string configFile_;
  pid_t pid_ = -1;
  int guardPipe_ = -1;  // the folder is removed when this is closed, by us or by our end
  pid_t guard_ = -1;
};

}  // namespace tolvane::test
