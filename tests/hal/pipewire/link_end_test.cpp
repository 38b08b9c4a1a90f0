// How a request for a link names the ports.
#include "hal/pipewire/link_end.h"

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using hal::pipewire::Graph;
using hal::pipewire::linkEndOf;

/// Node 40 with two inputs and an output, and node 50 with an input.
Graph graphWith(const char* first, const char* second) {
  Graph graph;
  graph.ports[41] = {.nodeId = 40, .isInput = true, .index = 0, .isAudio = true, .name = first};
  graph.ports[42] = {.nodeId = 40, .isInput = true, .index = 1, .isAudio = true, .name = second};
  graph.ports[43] = {.nodeId = 40, .isInput = false, .index = 0, .isAudio = true, .name = first};
  graph.ports[51] = {.nodeId = 50, .isInput = true, .index = 0, .isAudio = true, .name = first};
  return graph;
}

TEST(PipeWireLinkEnd, NamesAPortByItsNameBecauseAnotherMayGetItsIdentifier) {
  const Graph graph = graphWith("playback_FL", "playback_FR");
  EXPECT_EQ(linkEndOf(graph, 40, 41).port, "playback_FL");
  EXPECT_EQ(linkEndOf(graph, 40, 42).port, "playback_FR");
  EXPECT_EQ(linkEndOf(graph, 50, 51).port, "playback_FL");
}

TEST(PipeWireLinkEnd, NamesAPortByItsIdentifierIfItsNameSaysTooLittle) {
  EXPECT_EQ(linkEndOf(graphWith("same", "same"), 40, 42).port, "42");
  EXPECT_EQ(linkEndOf(graphWith("", "other"), 40, 41).port, "41");
  EXPECT_EQ(linkEndOf(graphWith("7", "0x8"), 40, 41).port, "41");
  EXPECT_EQ(linkEndOf(graphWith("7", "0x8"), 40, 42).port, "42");
  EXPECT_EQ(linkEndOf(Graph{}, 40, 41).port, "41");
}

TEST(PipeWireLinkEnd, NamesAPortByItsIdentifierIfAnotherHasItsNameAsAlias) {
  Graph graph = graphWith("input_1", "input_2");
  graph.ports[41].alias = "input_2";
  EXPECT_EQ(linkEndOf(graph, 40, 41).port, "input_1");
  EXPECT_EQ(linkEndOf(graph, 40, 42).port, "42");
  graph.ports[41].alias = "input_1";  // its own
  EXPECT_EQ(linkEndOf(graph, 40, 41).port, "input_1");
  EXPECT_EQ(linkEndOf(graph, 40, 42).port, "input_2");
}

}  // namespace
}  // namespace tolvane::test
