#include <ctime>
#include <filesystem>
#include <string>

#include <unistd.h>

#include "hal/jack/jack_devices.h"
#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

/// A device with one input, as an earlier list would have it.
hal::DeviceInfo deviceCalled(const std::string& client) {
  return hal::describeJackDevice({client, {client + ":capture_1"}, {}}, {48000.0, 256});
}

class JackStart : public JackFixture {
 protected:
  OSStatus startStatus(const hal::DeviceInfo& info) {
    const hal::StartResult result = driver_->start(info, client_);
    EXPECT_EQ(result.session == nullptr, result.status != noErr);
    return result.status;
  }

  JackSessionClient client_{2, 2, straightRoutes(2)};
};

TEST_F(JackStart, IsNotReadyWithoutAServer) {
  EXPECT_EQ(startStatus(deviceCalled("system")), kAudioHardwareNotReadyError);
}

TEST_F(JackStart, LeavesTheDatabaseOfAllClientsAloneWithoutAServer) {
  EXPECT_TRUE(driver_->devices().empty());
  EXPECT_EQ(startStatus(deviceCalled("system")), kAudioHardwareNotReadyError);
  EXPECT_FALSE(std::filesystem::exists("/dev/shm/jack_db-" + std::to_string(::getuid())));
}

TEST_F(JackStart, RefusesADeviceThatIsNotThere) {
  startServer();
  EXPECT_EQ(startStatus(deviceCalled("card")), kAudioHardwareBadDeviceError);
}

TEST_F(JackStart, RefusesADeviceWhosePortsHaveChanged) {
  startServer();
  const JackTestClient card = JackTestClient::card("card", 2, 3);
  hal::DeviceInfo info = device("card");
  info.outputStreams.push_back(1);
  EXPECT_EQ(startStatus(info), kAudioHardwareBadDeviceError);
}

TEST_F(JackStart, ConnectsOnePortAChannel) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 3);
  card.activate();
  auto session = start("card", client_);
  ASSERT_NE(session, nullptr);
  card.expectConnections("card:capture_1", {"Tolvane:in_1"});
  card.expectConnections("card:capture_2", {"Tolvane:in_2"});
  card.expectConnections("card:playback_1", {"Tolvane:out_1"});
  card.expectConnections("card:playback_3", {"Tolvane:out_3"});
  session.reset();
  card.expectConnections("card:capture_1", {});
  card.expectConnections("card:playback_3", {});
}

TEST_F(JackStart, LeavesAloneWhatTheUserDisconnects) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  const auto session = start("card", client_);
  card.expectConnections("card:capture_1", {"Tolvane:in_1"});
  card.disconnect("card:capture_1", "Tolvane:in_1");
  const std::uint64_t before = client_.cycles;
  EXPECT_TRUE(eventually([&] { return client_.cycles > before + 20; }));
  card.expectConnections("card:capture_1", {});
  EXPECT_TRUE(client_.alive);
}

TEST_F(JackStart, HandsOnOneBufferAChannelWithTheTimes) {
  startServer(512);
  JackTestClient card = JackTestClient::card("card", 2, 3);
  card.activate();
  auto session = start("card", client_);
  ASSERT_TRUE(eventually([this] { return client_.cycles > 3; }));
  session.reset();
  timespec clock{};
  clock_gettime(CLOCK_MONOTONIC, &clock);

  ASSERT_EQ(client_.inputBuffers.size(), 2U);
  ASSERT_EQ(client_.outputBuffers.size(), 3U);
  for (const auto* buffers : {&client_.inputBuffers, &client_.outputBuffers}) {
    for (const AudioBuffer& buffer : *buffers) {
      EXPECT_EQ(buffer.mNumberChannels, 1U);
      EXPECT_EQ(buffer.mDataByteSize, 512U * sizeof(float));
      EXPECT_NE(buffer.mData, nullptr);
    }
  }
  EXPECT_EQ(client_.now.mFlags, kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid);
  EXPECT_EQ(client_.inputTime.mSampleTime, client_.now.mSampleTime - 512.0);
  EXPECT_EQ(client_.outputTime.mSampleTime, client_.now.mSampleTime + 512.0);
  EXPECT_LT(client_.inputTime.mHostTime, client_.now.mHostTime);
  EXPECT_GT(client_.outputTime.mHostTime, client_.now.mHostTime);
  const auto nowNs =
      static_cast<std::uint64_t>(clock.tv_sec) * 1'000'000'000U + static_cast<std::uint64_t>(clock.tv_nsec);
  EXPECT_LE(client_.now.mHostTime, nowNs);
  EXPECT_LT(nowNs - client_.now.mHostTime, 60'000'000'000U);  // the same clock, not one with another epoch
}

TEST_F(JackStart, CallsTheClientNoMoreOnceStopped) {
  startServer(64);
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  for (int round = 0; round < 20; ++round) {
    JackSessionClient client(2, 2, straightRoutes(2));
    auto session = start("card", client);
    ASSERT_TRUE(eventually([&] { return client.cycles > 0; }));
    session.reset();
    const std::uint64_t cycles = client.cycles;
    const std::uint64_t cardCycles = card.cycles();
    ASSERT_TRUE(eventually([&] { return card.cycles() > cardCycles + 3; }));
    EXPECT_EQ(client.cycles, cycles);
  }
}

TEST_F(JackStart, RunsBesideAnotherOfItsName) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  const auto first = start("card", client_);
  JackSessionClient other(2, 2, straightRoutes(2));
  const auto second = start("card", other);
  EXPECT_TRUE(eventually([&] { return client_.cycles > 3 && other.cycles > 3; }));
  card.expectConnections("card:capture_1", {"Tolvane:in_1", "Tolvane-01:in_1"});
}

}  // namespace
}  // namespace tolvane::test
