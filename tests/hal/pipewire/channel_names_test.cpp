// The names of the devices' channels: as the ports' owners gave them.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/pipewire_driver.h"
#include "support/pipewire_client.h"
#include "support/pipewire_named_node.h"

namespace tolvane::test {
namespace {

using hal::ChannelInfo;
using ::testing::ElementsAre;

std::vector<std::string> namesOf(const std::vector<ChannelInfo>& channels) {
  std::vector<std::string> names;
  for (const ChannelInfo& channel : channels) names.push_back(channel.name);
  return names;
}

TEST(PipeWireChannelNames, AreThoseOfTheCardsPorts) {
  const PipeWireServer server({{.name = "card", .inputs = 2, .outputs = 3, .cardId = 900}});
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo card = onlyDevice(*driver);
  EXPECT_THAT(card.inputs, ElementsAre(ChannelInfo{"capture_AUX0", "card.source", "capture_AUX0"},
                                       ChannelInfo{"capture_AUX1", "card.source", "capture_AUX1"}));
  EXPECT_THAT(card.outputs, ElementsAre(ChannelInfo{"playback_AUX0", "card.sink", "playback_AUX0"},
                                        ChannelInfo{"playback_AUX1", "card.sink", "playback_AUX1"},
                                        ChannelInfo{"playback_AUX2", "card.sink", "playback_AUX2"}));
}

TEST(PipeWireChannelNames, AnAliasOfTheOwnersIsTheNameAndOneOfTheServersIsNot) {
  const PipeWireServer server({});
  PipeWireClient client;
  const PipeWireNamedNode node(
      client, "desk", "Audio/Source",
      {{{"port.name", "out_1"}, {"port.alias", "Kick"}},
       {{"port.name", "out_2"}, {"port.alias", "desk:out_2"}},  // as the server makes it
       {{"port.name", "out_3"}, {"port.alias", "Stage: out_3 left"}},
       {{"port.name", "out_4"}},  // the server makes the alias
       {{"port.name", "out_5"}, {"audio.channel", "FL"}}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_TRUE(eventually([&] { return onlyDevice(*driver).inputs.size() == 5; }));
  const hal::DeviceInfo desk = onlyDevice(*driver);
  EXPECT_THAT(namesOf(desk.inputs), ElementsAre("Kick", "out_2", "Stage: out_3 left", "out_4", "out_5"));
  EXPECT_EQ(desk.inputs[0].node, "desk");
  EXPECT_EQ(desk.inputs[0].port, "out_1");
}

TEST(PipeWireChannelNames, HostileOnesComeAsTheyAre) {
  const std::string longName(2000, 'x');
  const std::string hostile = "a\033[2J\nb\x9B\xFF";
  const PipeWireServer server({});
  PipeWireClient client;
  const PipeWireNamedNode node(client, "desk", "Audio/Sink",
                               {{{"port.name", "in_1"}, {"port.alias", hostile}},
                                {{"port.name", longName}, {"port.alias", longName}}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_TRUE(eventually([&] { return onlyDevice(*driver).outputs.size() == 2; }));
  EXPECT_THAT(namesOf(onlyDevice(*driver).outputs), ElementsAre(hostile, longName));
}

TEST(PipeWireChannelNames, OfAnAggregateAreItsMembers) {
  const PipeWireServer server({kFirst, kSecond});
  writeAggregates(server, aggregateText("Stage", {kSecond, kFirst}));
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo stage = deviceNamed(*driver, "Stage");
  std::vector<ChannelInfo> inputs = deviceNamed(*driver, "second").inputs;
  const std::vector<ChannelInfo> firsts = deviceNamed(*driver, "first").inputs;
  inputs.insert(inputs.end(), firsts.begin(), firsts.end());
  EXPECT_EQ(stage.inputs, inputs);
  EXPECT_EQ(stage.outputs[0], (ChannelInfo{"playback_AUX0", "second.sink", "playback_AUX0"}));
  EXPECT_EQ(stage.outputs[3], (ChannelInfo{"playback_AUX0", "first.sink", "playback_AUX0"}));
}

TEST(PipeWireChannelNames, AMissingMembersChannelsHaveNone) {
  const PipeWireServer server({kSecond});
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond}));
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo stage = deviceNamed(*driver, "Stage");
  EXPECT_THAT(namesOf(stage.inputs), ElementsAre("", "", "", "", "capture_AUX0", "capture_AUX1"));
}

}  // namespace
}  // namespace tolvane::test
