// The names of channels beside what pw-link prints of the same graph: the devices' ports, and our own.
#include <algorithm>
#include <csignal>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "ctl/support/tool_output.h"
#include "support/pipewire_client.h"
#include "support/pipewire_named_node.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

class ChannelNamesOnPipeWire : public testing::Test {
 protected:
  /// The device as `devices --channels --json` prints it.
  static json channelsOf(const std::string& device) {
    const Finished run = runProgram({"devices", "--channels", device, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out).at(0);
  }

  static std::vector<std::string> textsOf(const json& channels, const char* member) {
    std::vector<std::string> texts;
    for (const json& channel : channels)
      texts.push_back(channel.at(member).is_null() ? "" : channel.at(member));
    return texts;
  }

  /// "node:port" of every channel.
  static std::vector<std::string> portsOf(const json& channels) {
    std::vector<std::string> ports;
    for (const json& channel : channels) {
      ports.push_back(channel.at("node").get<std::string>() + ":" + channel.at("port").get<std::string>());
    }
    return ports;
  }

  /// The lines of pw-link that begin with the node's name.
  static std::vector<std::string> portsListed(const std::string& option, const std::string& node) {
    std::vector<std::string> ports = linesOf("pw-link " + option);
    std::erase_if(ports, [&](const std::string& port) { return !port.starts_with(node + ":"); });
    return ports;
  }

  /// Every channel is one port that pw-link lists, in its order, and is called like that port or its alias.
  static void expectCalledAsListed(const json& channels, const std::string& option, const std::string& node) {
    EXPECT_EQ(portsOf(channels), portsListed(option, node));
    const auto listed = indentedLinesOf("pw-link -v " + option);
    for (const json& channel : channels) {
      const auto port = listed.find(node + ":" + channel.at("port").get<std::string>());
      ASSERT_NE(port, listed.end()) << channel;
      EXPECT_TRUE(channel.at("name") == channel.at("port") ||
                  std::ranges::count(port->second, channel.at("name").get<std::string>()) == 1)
          << channel << " is " << testing::PrintToString(*port);
    }
  }

  PipeWireServer server_{{{.name = "first", .inputs = 3, .outputs = 4, .cardId = 901},
                          {.name = "second", .inputs = 2, .outputs = 1, .cardId = 902},
                          {.name = "speakers",
                           .inputs = 2,
                           .outputs = 7,
                           .cardId = 903,
                           .positions = {"FR", "FL", "LFE", "FC", "RL", "RR"}}}};
};

TEST_F(ChannelNamesOnPipeWire, AreThoseOfThePatchBay) {
  const json first = channelsOf("first");
  EXPECT_EQ(first.at("uid"), "pipewire:first");
  expectCalledAsListed(first.at("inputs"), "-o", "first.source");
  expectCalledAsListed(first.at("outputs"), "-i", "first.sink");
  EXPECT_EQ(textsOf(first.at("inputs"), "name"), textsOf(first.at("inputs"), "port"));
  EXPECT_THAT(textsOf(first.at("inputs"), "name"),
              ElementsAre("capture_AUX0", "capture_AUX1", "capture_AUX2"));
}

TEST_F(ChannelNamesOnPipeWire, OfNamedChannelsAreThoseOfThePatchBayPortByPort) {
  const json speakers = channelsOf("speakers");
  expectCalledAsListed(speakers.at("inputs"), "-o", "speakers.source");
  expectCalledAsListed(speakers.at("outputs"), "-i", "speakers.sink");
  EXPECT_THAT(textsOf(speakers.at("inputs"), "name"), ElementsAre("capture_FR", "capture_FL"));
  EXPECT_THAT(textsOf(speakers.at("outputs"), "name"),
              ElementsAre("playback_FR", "playback_FL", "playback_LFE", "playback_FC", "playback_RL",
                          "playback_RR", "playback_AUX6"));
}

TEST_F(ChannelNamesOnPipeWire, AreThoseOfThePortsThatTheChannelsAreLinkedTo) {
  const json speakers = channelsOf("speakers");
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "pipewire:speakers"});
  ASSERT_TRUE(child.waitForErr("routing on speakers"));
  const auto into = indentedLinesOf("pw-link -i -l");
  const auto outOf = indentedLinesOf("pw-link -o -l");
  const auto inputs = portsOf(speakers.at("inputs"));
  for (std::size_t c = 0; c < inputs.size(); ++c) {
    EXPECT_THAT(into.at("tolvane:input_" + std::to_string(c + 1)), ElementsAre("|<- " + inputs[c]));
  }
  const auto outputs = portsOf(speakers.at("outputs"));
  for (std::size_t c = 0; c < outputs.size(); ++c) {
    EXPECT_THAT(outOf.at("tolvane:output_" + std::to_string(c + 1)), ElementsAre("|-> " + outputs[c]));
  }
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(ChannelNamesOnPipeWire, OfAnAliasAreThoseThatThePatchBayShowsToo) {
  PipeWireClient client;
  const PipeWireNamedNode desk(client, "desk", "Audio/Source",
                               {{{"port.name", "out_1"}, {"port.alias", "Kick"}},
                                {{"port.name", "out_2"}, {"port.alias", "Snare: top"}},
                                {{"port.name", "out_3"}}});
  ASSERT_TRUE(ChildProcess::waitUntil([] { return portsListed("-o", "desk").size() == 3; }));
  const json channels = channelsOf("desk").at("inputs");
  ASSERT_EQ(channels.size(), 3U);
  const auto shown = indentedLinesOf("pw-link -o -v");
  for (const json& channel : channels) {
    const std::string name = channel.at("name");
    const auto port = shown.find("desk:" + channel.at("port").get<std::string>());
    ASSERT_NE(port, shown.end()) << channel;
    // The server's own alias is the node's name and the port's.
    const std::string alias = name == "out_3" ? "desk:out_3" : name;
    EXPECT_THAT(port->second, testing::Contains(alias));
  }
}

TEST_F(ChannelNamesOnPipeWire, OfAnAggregateAreItsMembers) {
  ASSERT_EQ(runProgram({"aggregate", "create", "Stage", "pipewire:second", "pipewire:first"}).status, 0);
  const json stage = channelsOf("pipewire-aggregate:Stage");
  std::vector<std::string> inputs = portsListed("-o", "second.source");
  for (const std::string& port : portsListed("-o", "first.source")) inputs.push_back(port);
  EXPECT_THAT(portsOf(stage.at("inputs")), UnorderedElementsAreArray(inputs));
  EXPECT_THAT(
      textsOf(stage.at("outputs"), "name"),
      ElementsAre("playback_AUX0", "playback_AUX0", "playback_AUX1", "playback_AUX2", "playback_AUX3"));
}

TEST_F(ChannelNamesOnPipeWire, OfWhatWeServeAreOurPortsAliases) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {{0, 1, 1.0F, true}, {2, 3, 0.5F, true}});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "pipewire:first"});
  ASSERT_TRUE(child.waitForErr("routing on first"));
  const auto inputs = indentedLinesOf("pw-link -i -v");
  const auto outputs = indentedLinesOf("pw-link -o -v");
  ASSERT_TRUE(inputs.contains("tolvane:input_3"));
  EXPECT_THAT(inputs.at("tolvane:input_3"), testing::Contains("capture_AUX2"));
  ASSERT_TRUE(outputs.contains("tolvane:output_4"));
  EXPECT_THAT(outputs.at("tolvane:output_4"), testing::Contains("playback_AUX3"));
  child.send(SIGINT);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("active  input name    output name\n"
                                 "    1       2   1.0   0.0  yes     capture_AUX0  playback_AUX1\n"
                                 "    3       4   0.5  -6.0  yes     capture_AUX2  playback_AUX3\n"));
}

TEST_F(ChannelNamesOnPipeWire, OfAnAggregateThatWeServeHaveTheMembersName) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {{0, 1, 1.0F, true}});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "All Interfaces"});
  ASSERT_TRUE(child.waitForErr("routing on All Interfaces"));
  const auto inputs = indentedLinesOf("pw-link -i -v");
  ASSERT_TRUE(inputs.contains("tolvane:input_4"));
  EXPECT_THAT(inputs.at("tolvane:input_1"), testing::Contains("first: capture_AUX0"));
  EXPECT_THAT(inputs.at("tolvane:input_4"), testing::Contains("second: capture_AUX0"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(ChannelNamesOnPipeWire, ThatAreLikeOurPortsNamesLeadNoLinkAstray) {
  PipeWireClient client;
  const PipeWireNamedNode odd(
      client, "odd", "Audio/Source",
      {{{"port.name", "input_2"}}, {{"port.name", "input_3"}}, {{"port.name", "input_1"}}});
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "pipewire:odd"});
  ASSERT_TRUE(child.waitForErr("routing on odd"));
  const auto links = indentedLinesOf("pw-link -i -l");
  EXPECT_THAT(links.at("tolvane:input_1"), ElementsAre("|<- odd:input_2"));
  EXPECT_THAT(links.at("tolvane:input_2"), ElementsAre("|<- odd:input_3"));
  EXPECT_THAT(links.at("tolvane:input_3"), ElementsAre("|<- odd:input_1"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(ChannelNamesOnPipeWire, AreInTheMeters) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {{2, 3, 1.0F, true}});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "first", "--meters"});
  EXPECT_TRUE(child.waitForOut("in 3 capture_AUX2 -inf dBFS  out 4 playback_AUX3 -inf dBFS\n"))
      << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

}  // namespace
}  // namespace tolvane::test
