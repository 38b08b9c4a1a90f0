#include "hal/pipewire/link_end.h"

#include <algorithm>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::hal::pipewire {

namespace {

/// The server takes such a name for an identifier.
bool isNumber(const std::string& name) {
  std::uint32_t number = 0;
  return spa_atou32(name.c_str(), &number, 0);
}

/// The server also looks for the name among aliases.
bool isOnlyOne(const Graph& graph, const GraphPort& port) {
  return std::count_if(graph.ports.begin(), graph.ports.end(), [&](const auto& entry) {
           const GraphPort& other = entry.second;
           const bool isCalledSo = other.name == port.name || other.alias == port.name;
           return isCalledSo && other.nodeId == port.nodeId && other.isInput == port.isInput;
         }) == 1;
}

}  // namespace

LinkEnd linkEndOf(const Graph& graph, std::uint32_t nodeId, std::uint32_t portId) {
  const auto found = graph.ports.find(portId);
  const bool isNamed = found != graph.ports.end() && !found->second.name.empty() &&
                       !isNumber(found->second.name) && isOnlyOne(graph, found->second);
  return {nodeId, portId, isNamed ? found->second.name : std::to_string(portId),
          found != graph.ports.end() ? found->second.serial : 0};
}

}  // namespace tolvane::hal::pipewire
