// A private PipeWire daemon with the cards that a test asks for: no D-Bus, no session manager, no hardware.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/private_folder.h"

namespace tolvane::test {

/// Properties of an object of the server.
using PipeWireProperties = std::map<std::string, std::string>;

/// A card, or a node that belongs to no card. Its inputs are a virtual source that a test can feed, its
/// outputs a sink that a test can record.
struct PipeWireCard {
  std::string name;  // its nodes' names are this with ".source" and ".sink" appended
  unsigned inputs = 0;
  unsigned outputs = 0;
  std::string description = {};         // empty: the name
  std::optional<unsigned> cardId = {};  // set: its nodes belong to this card
  bool isDuplexNode = false;            // one node that returns its input, instead of two nodes
  std::string alsaPcm = {};             // a sound card's PCM ("hw:5"), instead of null nodes
  // The names of the channels of both directions, from the first on; further channels are AUX ones.
  std::vector<std::string> positions = {};
};

/// The properties of the card's nodes for the adapter factory of the server that was constructed last.
[[nodiscard]] std::vector<PipeWireProperties> nodesOf(const PipeWireCard& card);

/// The clock that drives the cards.
enum class PipeWirePace {
  realTime,  // the machine's clock, at 48000 Hz
  slow,     // the same with cycles of 256 frames that last 1 s, so that a stall of the machine causes no xrun
  patient,  // starts each cycle once all nodes have finished the last one: fast, and without xruns
};

/// True if the server's version interrupts the audio when the quantum changes: PipeWire 1.4 and later
/// reallocate all buffers then.
[[nodiscard]] bool isSilentAtAQuantumChange();

/// Makes every client of this process find only the server whose sockets are in `runtimeFolder`.
void hidePipeWireServers(const std::string& runtimeFolder, const std::string& configFolder);

/// The entries of a server's context.objects that make these nodes, and a driver for the group "cards".
[[nodiscard]] std::string pipeWireObjects(const std::vector<PipeWireProperties>& nodes, PipeWirePace pace);

/// SPA_PLUGIN_DIR for a server with such objects.
[[nodiscard]] const char* pipeWirePlugins();

/// Runs from construction to destruction, or until the test program ends. Sets XDG_RUNTIME_DIR, so that every
/// client of this process finds only this server, and XDG_CONFIG_HOME. Every failure throws
/// std::runtime_error.
class PipeWireServer {
 public:
  explicit PipeWireServer(const std::vector<PipeWireCard>& cards, PipeWirePace pace = PipeWirePace::realTime);
  ~PipeWireServer();
  PipeWireServer(const PipeWireServer&) = delete;
  PipeWireServer& operator=(const PipeWireServer&) = delete;

  void kill();                                         // like a crash
  void start();                                        // after kill()
  void start(const std::vector<PipeWireCard>& cards);  // the same with these cards
  void hang();                                         // stops the process, so that it answers nothing
  void unhang();

  [[nodiscard]] pid_t pid() const noexcept { return pid_; }

  /// Does not exist until somebody creates it.
  [[nodiscard]] std::string configFolder() const { return folder_.path() + "/config"; }

 private:
  PrivateFolder folder_{"tolvane-pw"};
  const PipeWirePace pace_;
  std::string configFile_ = folder_.path() + "/server.conf";
  pid_t pid_ = -1;
};

}  // namespace tolvane::test
