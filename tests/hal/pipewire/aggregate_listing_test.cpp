// Which aggregates are listed, as what, and when.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/counting_observer.h"
#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

using hal::StreamLayout;
using ::testing::ElementsAre;

TEST(PipeWireAggregates, TwoCardsAreAlsoAllInterfacesWithAStreamEach) {
  const PipeWireServer server({kFirst, kSecond});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 3), ElementsAre("first", "second", "All Interfaces"));
  const hal::DeviceInfo all = deviceNamed(*driver, "All Interfaces");
  EXPECT_EQ(all.uid, "pipewire-aggregate:All Interfaces");
  EXPECT_EQ(all.transportType, kAudioDeviceTransportTypeAggregate);
  EXPECT_EQ(all.inputStreams, (StreamLayout{4, 2}));
  EXPECT_EQ(all.outputStreams, (StreamLayout{2, 3}));
  EXPECT_EQ(all.sampleRateHz, 48000.0);
  EXPECT_EQ(all.bufferFrames, 256U);
  EXPECT_EQ(all.minBufferFrames, 32U);
  EXPECT_EQ(all.maxBufferFrames, 2048U);
}

TEST(PipeWireAggregates, TheirOrderIsTheMenus) {
  const PipeWireServer server({kFirst, kSecond});
  const auto driver = hal::makePipeWireDriver();
  PipeWireClient session;
  session.setDefaultSink("second.sink");
  EXPECT_THAT(deviceNames(*driver, 3), ElementsAre("second", "first", "All Interfaces"));
  const hal::DeviceInfo all = deviceNamed(*driver, "All Interfaces");
  EXPECT_EQ(all.inputStreams, (StreamLayout{2, 4}));
  EXPECT_EQ(all.outputStreams, (StreamLayout{3, 2}));
}

TEST(PipeWireAggregates, AMemberWithoutADirectionHasNoStreamInIt) {
  const PipeWireServer server({{.name = "microphone", .inputs = 3, .cardId = 901}, kSecond});
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo all = deviceNamed(*driver, "All Interfaces");
  EXPECT_EQ(all.inputStreams, (StreamLayout{3, 2}));
  EXPECT_EQ(all.outputStreams, (StreamLayout{3}));
}

TEST(PipeWireAggregates, OneCardAndNodesWithoutCardAreNotAll) {
  const PipeWireServer server({kFirst, {.name = "speaker", .outputs = 2}});
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 2), ElementsAre("first", "speaker"));
  PipeWireClient hardware;
  hardware.addCard(kSecond);
  EXPECT_THAT(deviceNames(*driver, 4), ElementsAre("first", "speaker", "second", "All Interfaces"));
  hardware.removeCard(kFirst);
  EXPECT_THAT(deviceNames(*driver, 2), ElementsAre("speaker", "second"));
}

TEST(PipeWireAggregates, NamedOnesComeLastInTheFilesOrderAndKeepTheirMembersOrder) {
  const PipeWireServer server({kFirst, kSecond});
  writeAggregates(server, R"({"aggregates": [{"name": "Stage", "members": [)" + memberText(kSecond) + ", " +
                              memberText(kFirst) + R"(]}, {"name": "Bühne", "members": [)" +
                              memberText(kFirst) + "]}]}");
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 5), ElementsAre("first", "second", "All Interfaces", "Stage", "Bühne"));
  const hal::DeviceInfo stage = deviceNamed(*driver, "Stage");
  EXPECT_EQ(stage.uid, "pipewire-aggregate:Stage");
  EXPECT_EQ(stage.inputStreams, (StreamLayout{2, 4}));
  EXPECT_EQ(stage.outputStreams, (StreamLayout{3, 2}));
}

TEST(PipeWireAggregates, ANamedOneIsListedWithAllItsChannelsWhileAnyMemberIsThere) {
  const PipeWireServer server({kSecond});
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond}));
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 2), ElementsAre("second", "Stage"));
  EXPECT_EQ(deviceNamed(*driver, "Stage").inputStreams, (StreamLayout{4, 2}));
  PipeWireClient hardware;
  hardware.removeCard(kSecond);
  EXPECT_THAT(deviceNames(*driver, 0), ElementsAre());
  hardware.addCard(kFirst);
  EXPECT_THAT(deviceNames(*driver, 2), ElementsAre("first", "Stage"));
  EXPECT_EQ(deviceNamed(*driver, "Stage").inputStreams, (StreamLayout{4, 2}));
}

TEST(PipeWireAggregates, AMemberThatHasOtherChannelsNowKeepsTheStoredOnes) {
  PipeWireCard larger = kFirst;
  larger.inputs = 8;
  larger.outputs = 1;
  const PipeWireServer server({larger, kSecond});
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond}));
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo stage = deviceNamed(*driver, "Stage");
  EXPECT_EQ(stage.inputStreams, (StreamLayout{4, 2}));
  EXPECT_EQ(stage.outputStreams, (StreamLayout{2, 3}));
}

TEST(PipeWireAggregates, ADeviceThatIsCalledLikeOneIsToldApart) {
  const PipeWireServer server(
      {{.name = "a", .inputs = 1, .outputs = 1, .description = "Stage", .cardId = 901},
       {.name = "b", .inputs = 1, .outputs = 1, .description = "All Interfaces", .cardId = 902}});
  writeAggregates(server, R"({"aggregates": [{"name": "Stage", "members": [
      {"uid": "pipewire:a", "name": "a", "inputChannels": 1, "outputChannels": 1}]}]})");
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 4),
              ElementsAre("Stage (2)", "All Interfaces (2)", "All Interfaces", "Stage"));
}

TEST(PipeWireAggregates, ABadFileCostsTheNamedOnesAndIsNotTouched) {
  const PipeWireServer server({kFirst, kSecond});
  writeAggregates(server, R"({"aggregates": [{"name": 5}]})");
  const auto driver = hal::makePipeWireDriver();
  EXPECT_THAT(deviceNames(*driver, 3), ElementsAre("first", "second", "All Interfaces"));
  std::ifstream file(server.configFolder() + "/tolvane/aggregates.json");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), R"({"aggregates": [{"name": 5}]})");
}

TEST(PipeWireAggregates, AnObserverIsToldWhenTheFileIsMadeReplacedAndRemoved) {
  const PipeWireServer server({kFirst, kSecond});
  CountingObserver observer;
  const auto driver = hal::makePipeWireDriver();
  driver->setObserver(observer);
  ASSERT_EQ(listedDevices(*driver, 3).size(), 3U);
  ASSERT_TRUE(eventually([&] { return observer.told() >= 1; }));
  const std::string file = server.configFolder() + "/tolvane/aggregates.json";
  int told = observer.told();
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond}));  // makes the folders too
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_EQ(listedDevices(*driver, 4).back().name, "Stage");
  told = observer.told();
  std::ofstream(file + ".new") << aggregateText("Tour", {kSecond});
  std::filesystem::rename(file + ".new", file);
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_EQ(listedDevices(*driver, 4).back().name, "Tour");
  told = observer.told();
  std::filesystem::remove_all(server.configFolder());
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_EQ(listedDevices(*driver, 3).back().name, "All Interfaces");
  told = observer.told();
  writeAggregates(server, aggregateText("Again", {kFirst}));
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_EQ(listedDevices(*driver, 4).back().name, "Again");
}

TEST(PipeWireAggregates, TheCycleLengthOfOneIsSetLikeThatOfAnyDevice) {
  const PipeWireServer server({kFirst, kSecond});
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo all = deviceNamed(*driver, "All Interfaces");
  ASSERT_EQ(driver->setBufferFrames(all, 512), noErr);
  EXPECT_EQ(deviceNamed(*driver, "All Interfaces").bufferFrames, 512U);
  RoutingClient client(all, {});
  const hal::StartResult started = driver->start(all, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 512; }));
  ASSERT_EQ(driver->setBufferFrames(all, 128), noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 128; }));
}

}  // namespace
}  // namespace tolvane::test
