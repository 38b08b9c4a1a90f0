#pragma once

#include <cstdint>
#include <string>

#include "hal/pipewire/graph.h"

namespace tolvane::hal::pipewire {

/// One end of a link.
struct LinkEnd {
  std::uint32_t nodeId = 0;
  std::uint32_t portId = 0;
  std::string port;              // how a request names the port
  std::uint64_t portSerial = 0;  // tells the port from a later one with its identifier

  bool operator==(const LinkEnd& other) const noexcept {
    return nodeId == other.nodeId && portId == other.portId && portSerial == other.portSerial;
  }
};

/// The end at this port. Names the port by its name if no other port of the node has it, else by its
/// identifier. When we ask for the link, the server may already have given the identifier to a port of
/// another node. Servers before 1.0 would then link that port, and a link so made may leave others a cycle
/// late.
[[nodiscard]] LinkEnd linkEndOf(const Graph& graph, std::uint32_t nodeId, std::uint32_t portId);

}  // namespace tolvane::hal::pipewire
