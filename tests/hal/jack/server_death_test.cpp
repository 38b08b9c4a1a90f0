#include <gmock/gmock.h>

#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;

/// Uses the dummy driver's own device, so that the death touches no other client of this process.
class JackServerDeath : public JackFixture {
 protected:
  std::unique_ptr<hal::Session> startSystem(JackSessionClient& client) {
    auto session = start("system", client);
    EXPECT_TRUE(eventually([&] { return client.cycles > 2; }));
    return session;
  }

  /// Runs a session on a new server and ends the server under it.
  void surviveOne(void (JackServer::*end)()) {
    startServer();
    JackSessionClient client(2, 2, straightRoutes(2));
    auto session = startSystem(client);
    ASSERT_NE(session, nullptr);
    (*server_.*end)();
    EXPECT_TRUE(eventually([&] { return !client.alive; }));
    EXPECT_TRUE(stopsInTime(session));
    EXPECT_TRUE(eventually([this] { return driver_->devices().empty(); }));
    server_.reset();
  }

  static bool stopsInTime(std::unique_ptr<hal::Session>& session) {
    return endsWithin(500ms, [&] { session.reset(); });
  }
};

TEST_F(JackServerDeath, IsSurvivedTwentyCrashes) {
  for (int round = 0; round < 20; ++round) surviveOne(&JackServer::kill);
}

TEST_F(JackServerDeath, IsSurvivedTwentyShutdowns) {
  for (int round = 0; round < 20; ++round) surviveOne(&JackServer::terminate);
}

TEST_F(JackServerDeath, LeavesTheSessionSilentUntilItIsStopped) {
  startServer();
  JackSessionClient client(2, 2, straightRoutes(2));
  auto session = startSystem(client);
  server_->kill();
  ASSERT_TRUE(eventually([&] { return !client.alive; }));
  const std::uint64_t cycles = client.cycles;
  server_.reset();
  startServer();
  EXPECT_EQ(device("system").inputStreams.size(), 2U);  // listed again while the dead session still exists
  EXPECT_EQ(client.cycles, cycles);
  EXPECT_FALSE(client.alive);
  EXPECT_TRUE(stopsInTime(session));
}

class JackServerHang : public JackServerDeath {};

TEST_F(JackServerHang, LeavesTheListEmptyInTime) {
  startServer();
  device("system");
  server_->pause();
  std::this_thread::sleep_for(150ms);  // until the last answer is no longer valid
  for (int ask = 0; ask < 5; ++ask) {
    EXPECT_TRUE(endsWithin(150ms, [this] { EXPECT_THAT(driver_->devices(), IsEmpty()); }));
  }
  server_->resume();
  EXPECT_EQ(device("system").inputStreams.size(), 2U);
}

TEST_F(JackServerHang, LetsASessionStopInTimeAndLeaveTheGraphLater) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.activate();
  JackSessionClient client(2, 2, straightRoutes(2));
  auto session = start("card", client);
  ASSERT_TRUE(eventually([&] { return client.cycles > 2; }));
  server_->pause();
  EXPECT_TRUE(stopsInTime(session));
  const std::uint64_t cycles = client.cycles;
  server_->resume();
  EXPECT_TRUE(eventually([&] { return card.connectionsOf("card:capture_1").empty(); }));
  EXPECT_EQ(client.cycles, cycles);
}

TEST_F(JackServerHang, StopsAStartThatFindsIt) {
  startServer();
  const hal::DeviceInfo system = device("system");
  server_->pause();
  {
    const auto driver = hal::makeJackDriver();
    JackSessionClient client(2, 2, straightRoutes(2));
    EXPECT_TRUE(endsWithin(
        800ms, [&] { EXPECT_EQ(driver->start(system, client).status, kAudioHardwareNotReadyError); }));
  }
  server_->resume();
  // Once the server is back, the driver undoes the unfinished start, so the next start succeeds.
  JackSessionClient client(2, 2, straightRoutes(2));
  EXPECT_NE(startSystem(client), nullptr);
}

TEST_F(JackServerHang, MayEndInACrash) {
  startServer();
  JackSessionClient client(2, 2, straightRoutes(2));
  auto session = startSystem(client);
  server_->pause();
  EXPECT_TRUE(stopsInTime(session));
  EXPECT_THAT(driver_->devices(), IsEmpty());
  server_->kill();
  server_.reset();
  surviveOne(&JackServer::kill);
}

}  // namespace
}  // namespace tolvane::test
