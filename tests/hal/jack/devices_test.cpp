#include <gmock/gmock.h>

#include "hal/jack/jack_devices.h"
#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(GroupJackPorts, GroupsByClientInTheOrderOfFirstPorts) {
  const auto devices =
      hal::groupJackPorts({{"system:capture_1", true}, {"usb:in", false}, {"system:playback_1", false}});
  EXPECT_THAT(devices, ElementsAre(hal::JackDevice{"system", {"system:capture_1"}, {"system:playback_1"}},
                                   hal::JackDevice{"usb", {}, {"usb:in"}}));
}

TEST(GroupJackPorts, OrdersNumberedPortsByNumber) {
  const auto devices = hal::groupJackPorts(
      {{"c:capture_10", true}, {"c:capture_2", true}, {"c:capture_9", true}, {"c:capture_1", true}});
  EXPECT_THAT(devices.at(0).capturePorts,
              ElementsAre("c:capture_1", "c:capture_2", "c:capture_9", "c:capture_10"));
}

TEST(GroupJackPorts, KeepsTheServersOrderOfNamedPorts) {
  const auto devices = hal::groupJackPorts({{"c:Right", true}, {"c:Left", true}, {"c:aux 2", true}});
  EXPECT_THAT(devices.at(0).capturePorts, ElementsAre("c:Right", "c:Left", "c:aux 2"));
  const auto mixed = hal::groupJackPorts({{"c:line_2", true}, {"c:mic_1", true}});
  EXPECT_THAT(mixed.at(0).capturePorts, ElementsAre("c:line_2", "c:mic_1"));
}

TEST(GroupJackPorts, TakesTheClientUpToTheFirstColon) {
  EXPECT_EQ(hal::jackClientOf("card:port:1"), "card");
  EXPECT_EQ(hal::jackClientOf("card"), "card");
}

class JackDevices : public JackFixture {};

TEST_F(JackDevices, ListsThePhysicalAudioPortsOfEachClient) {
  startServer(512);
  JackTestClient card = JackTestClient::card("card", 3, 12);
  card.addMidiPort("midi_in");
  const JackTestClient ear = JackTestClient::ear("ear", 2);

  const hal::DeviceInfo found = device("card");
  const auto list = devices();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].uid, "jack:system");
  EXPECT_EQ(list[0].inputStreams, hal::StreamLayout(2, 1));
  EXPECT_EQ(list[0].outputStreams, hal::StreamLayout(2, 1));
  EXPECT_EQ(list[1], found);
  EXPECT_EQ(found.name, "card");
  EXPECT_EQ(found.transportType, UInt32{kAudioDeviceTransportTypeJack});
  EXPECT_EQ(found.inputStreams, hal::StreamLayout(3, 1));
  EXPECT_EQ(found.outputStreams, hal::StreamLayout(12, 1));
  EXPECT_EQ(found.sampleRateHz, 48000.0);
  EXPECT_EQ(found.bufferFrames, 512U);
}

TEST_F(JackDevices, ForgetsADeviceThatHasGone) {
  startServer();
  {
    const JackTestClient card = JackTestClient::card("card", 1, 1);
    device("card");
  }
  EXPECT_TRUE(eventually([this] { return driver_->devices().size() == 1; }));
}

TEST_F(JackDevices, HasNoneWithoutAServerAndStartsNoneAndSaysNothing) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  EXPECT_THAT(driver_->devices(), IsEmpty());
  EXPECT_THAT(driver_->devices(), IsEmpty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(jack_client_open("late", JackNoStartServer, nullptr), nullptr);
}

TEST_F(JackDevices, FindsAServerThatComesLater) {
  EXPECT_THAT(driver_->devices(), IsEmpty());
  startServer();
  EXPECT_EQ(device("system").inputStreams.size(), 2U);
}

TEST(JackLibraryVersion, SaysWhetherItIsPipeWires) {
  const std::string version = jack_get_version_string();
  EXPECT_EQ(hal::jackLibraryIsPipeWire(), version.find("PipeWire") != std::string::npos) << version;
}

}  // namespace
}  // namespace tolvane::test
