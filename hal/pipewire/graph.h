// What a connection knows of the server's graph: plain records, kept by events, read on the connection's
// thread only.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tolvane::hal::pipewire {

/// A sound card, as far as the server knows one behind its nodes.
struct GraphCard {
  std::uint64_t serial = 0;  // never used twice in the life of a server, unlike the identifier
  std::string name;          // lasting
  std::string description;   // for people
};

/// A node that makes or takes audio for a device.
struct GraphNode {
  std::uint64_t serial = 0;
  std::string name;         // lasting
  std::string description;  // for people
  std::string mediaClass;
  std::optional<std::uint32_t> cardId;
  bool hasAnswered = false;     // to being asked about itself; what follows is known only then
  std::string cardName;         // lasting, where the node itself says what card it is of
  std::optional<int> alsaCard;  // the number of the sound card that it plays on, or takes from
  // How many channels it says it has, even before it has a port for each.
  std::optional<std::uint32_t> channels;
  std::uint32_t inputPorts = 0;  // how many ports the server has made for it, of whatever kind
  std::uint32_t outputPorts = 0;

  bool operator==(const GraphNode&) const = default;
};

struct GraphPort {
  std::uint32_t nodeId = 0;
  bool isInput = false;
  std::uint32_t index = 0;  // among the node's ports of this direction
  bool isAudio = false;     // a channel; false of those for control
};

/// The server's clock, as its settings have it.
struct GraphClock {
  double rateHz = 48000.0;
  std::uint32_t minQuantum = 32;
  std::uint32_t maxQuantum = 2048;
  double forcedRateHz = 0.0;        // 0: not forced
  std::uint32_t forcedQuantum = 0;  // 0: not forced
};

/// Keyed by the server's identifiers, which it uses again at once when an object has gone.
struct Graph {
  std::map<std::uint32_t, GraphCard> cards;
  std::map<std::uint32_t, GraphNode> nodes;
  std::map<std::uint32_t, GraphPort> ports;
  std::string defaultSink;  // a node's name; empty when there is none
  GraphClock clock;
};

}  // namespace tolvane::hal::pipewire
