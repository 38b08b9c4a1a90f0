#include "hal/pipewire/device_group.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "hal/support/natural_order.h"

namespace tolvane::hal::pipewire {

namespace {

bool isOfClass(std::string_view mediaClass, std::string_view wanted) {
  if (!mediaClass.starts_with(wanted)) return false;
  const std::string_view rest = mediaClass.substr(wanted.size());
  return rest.empty() || (rest.front() == '/' && rest != "/Internal");
}

std::string keyOf(const GraphNode& node, const GraphCard* card) {
  if (card != nullptr) return "card " + std::to_string(card->serial);
  if (node.cardId) return "nodes of card " + std::to_string(*node.cardId);
  return "node " + std::to_string(node.serial);
}

}  // namespace

bool givesInputs(const GraphNode& node) {
  return isOfClass(node.mediaClass, "Audio/Source") || isOfClass(node.mediaClass, "Audio/Duplex");
}

bool givesOutputs(const GraphNode& node) {
  return isOfClass(node.mediaClass, "Audio/Sink") || isOfClass(node.mediaClass, "Audio/Duplex");
}

bool givesMonitors(const GraphNode& node) {
  return isOfClass(node.mediaClass, "Audio/Sink");
}

std::uint64_t DeviceGroup::serial() const {
  if (card != nullptr) return card->serial;
  std::uint64_t first = std::numeric_limits<std::uint64_t>::max();
  for (const Member& member : members) first = std::min(first, member.node->serial);
  return first;
}

std::string DeviceGroup::lastingName() const {
  if (card != nullptr && !card->name.empty()) return card->name;
  const auto named = std::find_if(members.begin(), members.end(),
                                  [](const Member& member) { return !member.node->cardName.empty(); });
  return named != members.end() ? named->node->cardName : members.front().node->name;
}

std::string DeviceGroup::description() const {
  if (card != nullptr && !card->description.empty()) return card->description;
  const auto sink = std::find_if(members.begin(), members.end(),
                                 [](const Member& member) { return givesOutputs(*member.node); });
  const GraphNode& spokesman = sink != members.end() ? *sink->node : *members.front().node;
  return spokesman.description.empty() ? spokesman.name : spokesman.description;
}

std::string DeviceGroup::placeOfNamesake(const UsbLookup& find) const {
  for (const Member& member : members) {
    if (!member.node->alsaCard || !isCard()) continue;
    const std::optional<UsbCard> usb = find(*member.node->alsaCard);
    if (usb && usb->serial.empty()) return usb->busPath;
  }
  return {};
}

std::string DeviceGroup::proAudioCommand() const {
  if (card == nullptr || !card->profile || !card->proAudioProfile) return {};
  if (*card->profile == *card->proAudioProfile) return {};
  return "pw-cli set-param " + std::to_string(*members.front().node->cardId) +
         " Profile '{ index: " + std::to_string(*card->proAudioProfile) + ", save: true }'";
}

bool DeviceGroup::hasAnswered() const {
  return std::all_of(members.begin(), members.end(),
                     [](const Member& member) { return member.node->hasAnswered; });
}

bool DeviceGroup::has(const std::string& nodeName) const {
  return std::any_of(members.begin(), members.end(),
                     [&](const Member& member) { return member.node->name == nodeName; });
}

std::vector<DeviceGroup> deviceGroups(const Graph& graph) {
  std::map<std::string, DeviceGroup> groups;
  for (const auto& [id, node] : graph.nodes) {
    const auto found = node.cardId ? graph.cards.find(*node.cardId) : graph.cards.end();
    const GraphCard* const card = found != graph.cards.end() ? &found->second : nullptr;
    const std::string key = keyOf(node, card);
    DeviceGroup& group = groups[key];
    group.key = key;
    group.card = card;
    group.members.push_back({id, &node});
  }
  std::vector<DeviceGroup> ordered;
  for (auto& [key, group] : groups) {
    std::sort(group.members.begin(), group.members.end(), [](const auto& a, const auto& b) {
      if (a.node->name != b.node->name) return naturallyLess(a.node->name, b.node->name);
      return a.node->serial < b.node->serial;
    });
    ordered.push_back(std::move(group));
  }
  std::sort(ordered.begin(), ordered.end(), [&](const DeviceGroup& a, const DeviceGroup& b) {
    const bool aIsDefault = a.has(graph.defaultSink);
    const bool bIsDefault = b.has(graph.defaultSink);
    if (aIsDefault != bIsDefault) return aIsDefault;
    return a.serial() < b.serial();
  });
  return ordered;
}

}  // namespace tolvane::hal::pipewire
