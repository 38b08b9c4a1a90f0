// What a connection knows of the server's graph. Plain records, updated by events and read on the
// connection's thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tolvane::hal::pipewire {

/// A sound card that the server knows of.
struct GraphCard {
  std::uint64_t serial = 0;  // never reused while the server runs, unlike the identifier
  std::string name;          // lasting
  std::string description;   // for people
  std::chrono::steady_clock::time_point seen = {};  // first by us
  bool hasProfiles = true;                          // false once it has said that it has none
  std::optional<int> profile = {};                  // in use; none until the card has answered
  std::optional<int> proAudioProfile = {};  // all channels in order, untouched; none if it has no such
};

/// A source or sink of a device's audio.
struct GraphNode {
  std::uint64_t serial = 0;
  std::string name;         // lasting
  std::string description;  // for people
  std::string mediaClass;
  std::optional<std::uint32_t> cardId;
  bool hasAnswered = false;     // it has described itself; the fields below are valid only then
  std::string cardName;         // lasting; empty unless the node itself names its card
  std::optional<int> alsaCard;  // ALSA's number of the sound card that it plays to or captures from
  // The number of channels that it announces; their ports may come later.
  std::optional<std::uint32_t> channels;
  std::uint32_t inputPorts = 0;  // number of ports of all kinds that the server has made for it
  std::uint32_t outputPorts = 0;
  std::chrono::steady_clock::time_point seen = {};  // first by us

  bool operator==(const GraphNode&) const = default;
};

struct GraphPort {
  std::uint64_t serial = 0;
  std::uint32_t nodeId = 0;
  bool isInput = false;
  std::uint32_t index = 0;  // index among the node's ports of this direction
  bool isAudio = false;     // true for a channel, false for a control port
  std::string name;
  std::string alias = {};        // another name, which the server also takes for the port
  std::string channelName = {};  // as the port's owner calls the channel; empty if it has no name
};

/// The server's clock settings.
struct GraphClock {
  double rateHz = 48000.0;
  std::uint32_t minQuantum = 32;
  std::uint32_t maxQuantum = 2048;
  double forcedRateHz = 0.0;        // 0: not forced
  std::uint32_t forcedQuantum = 0;  // 0: not forced
};

/// Keyed by the server's identifiers. When an object has gone, the server may reuse its identifier at once.
struct Graph {
  std::map<std::uint32_t, GraphCard> cards;
  std::map<std::uint32_t, GraphNode> nodes;
  std::map<std::uint32_t, GraphPort> ports;
  std::string defaultSink;  // a node's name; empty when there is none
  GraphClock clock;
};

}  // namespace tolvane::hal::pipewire
