// The devices of a private server: which are listed, how, in which order, and when.
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/pipewire_driver.h"
#include "support/pipewire_client.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

using hal::DeviceInfo;
using hal::StreamLayout;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> textsOf(const std::vector<DeviceInfo>& devices, std::string DeviceInfo::*text) {
  std::vector<std::string> texts(devices.size());
  std::transform(devices.begin(), devices.end(), texts.begin(),
                 [&](const DeviceInfo& device) { return device.*text; });
  return texts;
}

std::vector<std::string> namesOf(const std::vector<DeviceInfo>& devices) {
  return textsOf(devices, &DeviceInfo::name);
}

std::vector<std::string> uidsOf(const std::vector<DeviceInfo>& devices) {
  return textsOf(devices, &DeviceInfo::uid);
}

TEST(PipeWireEnumeration, SinkAndSourceOfOneCardAreOneDevice) {
  const PipeWireServer server({{.name = "card", .inputs = 18, .outputs = 20, .cardId = 900}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].uid, "pipewire:card");
  EXPECT_EQ(devices[0].name, "card");
  EXPECT_EQ(devices[0].transportType, kAudioDeviceTransportTypePipeWire);
  EXPECT_EQ(devices[0].inputStreams, StreamLayout(18, 1));
  EXPECT_EQ(devices[0].outputStreams, StreamLayout(20, 1));
  EXPECT_EQ(devices[0].sampleRateHz, 48000.0);
  EXPECT_EQ(devices[0].bufferFrames, 256U);
}

/// The sound cards that are listed for a card whose nodes have these extra properties, as set by a session
/// manager or by whoever made the nodes.
std::vector<int> alsaCardsOf(const std::string& name, const PipeWireProperties& sinkSays,
                             const PipeWireProperties& sourceSays) {
  const PipeWireServer server({});
  PipeWireClient hardware;
  auto nodes = nodesOf({.name = name, .inputs = 2, .outputs = 2, .cardId = 900});
  nodes[0].insert(sourceSays.begin(), sourceSays.end());
  nodes[1].insert(sinkSays.begin(), sinkSays.end());
  for (const PipeWireProperties& node : nodes) hardware.addNode(node);
  const auto driver = hal::makePipeWireDriver();
  return onlyDevice(*driver).alsaCards;
}

TEST(PipeWireEnumeration, TheSoundCardOfADeviceIsKnownByItsNumber) {
  using Cards = std::vector<int>;
  EXPECT_EQ(alsaCardsOf("a", {{"api.alsa.path", "hw:3,0"}}, {{"api.alsa.path", "hw:3"}}), Cards{3});
  EXPECT_EQ(alsaCardsOf("b", {{"alsa.card", "2"}}, {}), Cards{2});
  EXPECT_EQ(alsaCardsOf("c", {{"api.alsa.pcm.card", "1"}}, {{"api.alsa.card", "4"}}), (Cards{1, 4}));
  EXPECT_EQ(alsaCardsOf("d", {{"api.alsa.path", "front:PCH"}}, {}), Cards{});
  EXPECT_EQ(alsaCardsOf("e", {}, {}), Cards{});
}

TEST(PipeWireEnumeration, NodesWithoutCardAreDevicesOfTheirOwnAndMonitorsAreNone) {
  const PipeWireServer server({{.name = "interface", .inputs = 3, .outputs = 5}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 2);
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_THAT(uidsOf(devices), ElementsAre("pipewire:interface.source", "pipewire:interface.sink"));
  EXPECT_EQ(devices[0].inputStreams, StreamLayout(3, 1));
  EXPECT_THAT(devices[0].outputStreams, IsEmpty());
  EXPECT_THAT(devices[1].inputStreams, IsEmpty());
  EXPECT_EQ(devices[1].outputStreams, StreamLayout(5, 1));
}

TEST(PipeWireEnumeration, ADuplexNodeGivesBothDirections) {
  const PipeWireServer server({{.name = "loop", .inputs = 4, .outputs = 4, .isDuplexNode = true}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].inputStreams, StreamLayout(4, 1));
  EXPECT_EQ(devices[0].outputStreams, StreamLayout(4, 1));
}

TEST(PipeWireEnumeration, EqualDescriptionsAreMadeDistinct) {
  const PipeWireServer server(
      {{.name = "a", .inputs = 1, .outputs = 1, .description = "USB Audio", .cardId = 901},
       {.name = "b", .inputs = 1, .outputs = 1, .description = "USB Audio", .cardId = 902}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = plainDevices(*driver, 2);
  EXPECT_THAT(namesOf(devices), ElementsAre("USB Audio", "USB Audio (2)"));
  EXPECT_THAT(uidsOf(devices), ElementsAre("pipewire:a", "pipewire:b"));
}

TEST(PipeWireEnumeration, TheDefaultSinksDeviceComesFirstThenTheServersOrder) {
  const PipeWireServer server({{.name = "a", .inputs = 2, .outputs = 2, .cardId = 901},
                               {.name = "b", .inputs = 2, .outputs = 2, .cardId = 902},
                               {.name = "c", .inputs = 2, .outputs = 2, .cardId = 903}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(namesOf(plainDevices(*driver, 3)), ElementsAre("a", "b", "c"));
  PipeWireClient session;
  session.setDefaultSink("c.sink");
  EXPECT_THAT(namesOf(plainDevices(*driver, 3)), ElementsAre("c", "a", "b"));
  session.setDefaultSink("b.sink");
  EXPECT_THAT(namesOf(plainDevices(*driver, 3)), ElementsAre("b", "a", "c"));
}

TEST(PipeWireEnumeration, CardsComeAndGo) {
  const PipeWireCard arriving{.name = "usb", .inputs = 6, .outputs = 2, .cardId = 905};
  const PipeWireServer server({{.name = "a", .inputs = 2, .outputs = 2, .cardId = 901}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(namesOf(plainDevices(*driver, 1)), ElementsAre("a"));
  PipeWireClient hardware;
  hardware.addCard(arriving);
  const auto devices = plainDevices(*driver, 2);
  EXPECT_THAT(uidsOf(devices), ElementsAre("pipewire:a", "pipewire:usb"));
  EXPECT_EQ(devices.back().inputStreams, StreamLayout(6, 1));
  hardware.removeCard(arriving);
  EXPECT_THAT(namesOf(plainDevices(*driver, 1)), ElementsAre("a"));
}

TEST(PipeWireEnumeration, AForcedQuantumAndRateAreTheDevices) {
  const PipeWireServer server({{.name = "a", .inputs = 2, .outputs = 2, .cardId = 901}});
  const auto driver = hal::makePipeWireDriver();
  PipeWireClient session;
  session.setSetting("clock.force-quantum", "64");
  session.setSetting("clock.force-rate", "96000");
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].bufferFrames, 64U);
  EXPECT_EQ(devices[0].sampleRateHz, 96000.0);
}

TEST(PipeWireEnumeration, AServerThatIsKilledHasNoDevicesAndOneThatReturnsHasThemAgain) {
  PipeWireServer server({{.name = "a", .inputs = 2, .outputs = 2, .cardId = 901}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(uidsOf(listedDevices(*driver, 1)), ElementsAre("pipewire:a"));
  server.kill();
  EXPECT_THAT(listedDevices(*driver, 0), IsEmpty());
  server.start();
  EXPECT_THAT(uidsOf(listedDevices(*driver, 1)), ElementsAre("pipewire:a"));
}

TEST(PipeWireEnumeration, ANodeThatSaysMoreChannelsThanItHasPortsIsListedWithItsPorts) {
  // No current server gives a node more than 64 ports.
  const PipeWireServer server({{.name = "large", .outputs = 65, .cardId = 901}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].outputStreams, StreamLayout(64, 1));
}

TEST(PipeWireEnumeration, SixtyFourChannelsEachWay) {
  const PipeWireServer server({{.name = "large", .inputs = 64, .outputs = 64, .cardId = 901}});
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].inputStreams, StreamLayout(64, 1));
  EXPECT_EQ(devices[0].outputStreams, StreamLayout(64, 1));
}

}  // namespace
}  // namespace tolvane::test
