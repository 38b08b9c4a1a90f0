// A jackd that dies under a running engine, and the next one.
#include <optional>

#include "hal/promised_times.h"
#include "hal/servers/engine_client.h"
#include "support/jack_server.h"
#include "support/jack_test_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

class JackEngine : public testing::Test {
 protected:
  void SetUp() override {
    server_.emplace();
    // The dummy driver's own device, so that the death affects no other client of this process.
    device_ = deviceNamed(engine_, "system");
    ASSERT_FALSE(engine_.start(device_, {}));
    ASSERT_TRUE(runs(10s));
  }
  void TearDown() override { engine_.stop(); }

  void die() {
    server_->kill();
    EXPECT_TRUE(eventually([&] { return !isAlive(device_); }));
  }

  void beginAnew() {
    server_.reset();
    server_.emplace();
  }

  std::optional<JackServer> server_;
  CoreAudioEngine engine_{&countingIoProc};
  AudioDeviceID device_ = kAudioObjectUnknown;
};

TEST_F(JackEngine, RunsAgainInTwoSecondsOnTheNextServer) {
  for (int round = 0; round < 3; ++round) {
    die();
    const std::uint64_t cycles = engineCycles;
    beginAnew();
    EXPECT_TRUE(eventually(kReturnBound, [&] { return engineCycles > cycles; })) << round;
    EXPECT_TRUE(isAlive(device_)) << round;
    EXPECT_TRUE(engine_.isRunning());
  }
  {
    const JackTestClient ear = JackTestClient::ear("ear", 1);
    ear.expectConnections("system:capture_1", {"Tolvane:in_1"});
    ear.expectConnections("system:playback_2", {"Tolvane:out_2"});
  }
  EXPECT_EQ(deviceNamed(engine_, "system"), device_);
  expectStopsInASecond(engine_);
}

TEST_F(JackEngine, ADeadServersDeviceStopsInASecondAndStartsOnTheNext) {
  die();
  expectStopsInASecond(engine_);
  beginAnew();
  ASSERT_EQ(deviceNamed(engine_, "system"), device_);
  ASSERT_FALSE(engine_.start(device_, {}));
  EXPECT_TRUE(runs(10s));
}

TEST_F(JackEngine, AStopRightAfterTheDeathIsInTime) {
  server_->kill();
  expectStopsInASecond(engine_);
}

}  // namespace
}  // namespace tolvane::test
