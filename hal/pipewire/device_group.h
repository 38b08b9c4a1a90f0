// The nodes of the server's graph, put together as devices.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hal/pipewire/graph.h"
#include "hal/support/usb_card.h"

namespace tolvane::hal::pipewire {

/// Finds the USB card with ALSA's number; none if that card is not on USB.
using UsbLookup = std::function<std::optional<UsbCard>(int alsaCard)>;

/// What a device that has the node gets from it.
[[nodiscard]] bool givesInputs(const GraphNode& node);
[[nodiscard]] bool givesOutputs(const GraphNode& node);
[[nodiscard]] bool givesMonitors(const GraphNode& node);

/// The nodes of one device: those of one card, or one without a card. Points into the graph.
struct DeviceGroup {
  struct Member {
    std::uint32_t id;
    const GraphNode* node;
  };

  std::string key;  // unique among the devices present now
  const GraphCard* card = nullptr;
  std::vector<Member> members;  // at least one, in channel order, which does not change

  /// The number by which the server orders devices.
  [[nodiscard]] std::uint64_t serial() const;
  [[nodiscard]] std::string lastingName() const;
  /// The name for people.
  [[nodiscard]] std::string description() const;
  /// Where a USB card is plugged in that its name does not tell from others of its kind; else empty.
  [[nodiscard]] std::string placeOfNamesake(const UsbLookup& find) const;
  /// The command that puts the card into its pro-audio profile; empty if it is in it or has none.
  [[nodiscard]] std::string proAudioCommand() const;
  [[nodiscard]] bool isCard() const { return members.front().node->cardId.has_value(); }
  /// True once all its nodes have described themselves.
  [[nodiscard]] bool hasAnswered() const;
  [[nodiscard]] bool has(const std::string& nodeName) const;
};

/// All devices of the graph in menu order: that of the default sink first, then the server's order.
[[nodiscard]] std::vector<DeviceGroup> deviceGroups(const Graph& graph);

}  // namespace tolvane::hal::pipewire
