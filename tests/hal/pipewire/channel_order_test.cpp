// A card's channels follow its nodes' names, whatever identifiers the server gave the nodes.
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/device_list.h"

namespace tolvane::test {
namespace {

using hal::pipewire::DeviceList;
using hal::pipewire::Graph;

/// A node of the card, with one output channel.
struct Output {
  std::string name;
  std::uint64_t serial;
};

/// The card's outputs as listed if the server numbers the nodes in this order.
std::vector<std::string> listed(const std::vector<Output>& nodes) {
  constexpr std::uint32_t kCard = 1;
  Graph graph;
  graph.cards[kCard] = {.serial = 1, .name = "card", .description = "Card"};
  std::uint32_t id = kCard;
  for (const Output& output : nodes) {
    hal::pipewire::GraphNode node;
    node.name = output.name;
    node.serial = output.serial;
    node.mediaClass = "Audio/Sink";
    node.cardId = kCard;
    node.hasAnswered = true;
    node.channels = 1;
    node.inputPorts = 1;
    graph.nodes[++id] = node;
    graph.ports[id + 100] = {.nodeId = id, .isInput = true, .index = 0, .isAudio = true, .name = {}};
  }
  std::vector<std::string> names;
  const std::uint32_t firstNode = kCard + 1;
  const auto devices = DeviceList().build(graph, {});
  for (const auto& channel : devices.at(0).outputs) {
    const Output& node = nodes[channel.nodeId - firstNode];
    names.push_back(node.name + " " + std::to_string(node.serial));
  }
  return names;
}

/// Expects the same list for every order of the identifiers.
void expectAlways(std::vector<Output> nodes, const std::vector<std::string>& expected) {
  const auto byName = [](const Output& a, const Output& b) {
    return a.name != b.name ? a.name < b.name : a.serial < b.serial;
  };
  std::sort(nodes.begin(), nodes.end(), byName);
  do {
    EXPECT_EQ(listed(nodes), expected);
  } while (std::next_permutation(nodes.begin(), nodes.end(), byName));
}

TEST(PipeWireChannelOrder, TakesNumbersInNamesAsNumbers) {
  expectAlways({{"out-10", 1}, {"out-9", 2}, {"out-1a", 3}, {"in-30", 4}},
               {"in-30 4", "out-1a 3", "out-9 2", "out-10 1"});
}

TEST(PipeWireChannelOrder, IsOneForNumbersWithLeadingZeros) {
  expectAlways({{"out-1", 1}, {"out-01", 2}, {"out-1", 3}}, {"out-01 2", "out-1 1", "out-1 3"});
}

}  // namespace
}  // namespace tolvane::test
