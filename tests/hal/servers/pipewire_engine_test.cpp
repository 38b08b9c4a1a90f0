// The whole path on PipeWire: a card's signal goes through the server, the driver, the HAL's surface and the
// engine and back. Then the server dies under it.
#include "hal/pipewire/patch_rig.h"
#include "hal/promised_times.h"
#include "hal/servers/engine_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

class PipeWireEngine : public testing::Test {
 protected:
  void TearDown() override { engine_.stop(); }

  void start() {
    device_ = deviceNamed(engine_, card_.name);
    const auto error = engine_.start(device_, routes_);
    ASSERT_FALSE(error) << error->errorDescription();
  }

  /// Expects every sample where the patch sends it, in its cycle and bit for bit. Tries again if a busy
  /// machine has missed a cycle of the server.
  void expectHeard() {
    EXPECT_TRUE(eventually([this] {
      PatchRig rig(card_, routes_);
      return rig.settle() && rig.waitForFrames(24000) && rig.isRight();
    }));
  }

  void die() {
    server_.kill();
    EXPECT_TRUE(eventually([&] { return !isAlive(device_); }));
  }

  const PipeWireCard card_{.name = "Mixer", .inputs = 4, .outputs = 4, .cardId = 900};
  PipeWireServer server_{{card_}};
  const std::vector<PatchConnection> routes_ = {
      {0, 3, 1.0F, true}, {1, 2, 1.0F, true}, {2, 0, 1.0F, true}, {3, 1, 1.0F, true}};
  CoreAudioEngine engine_{&countingIoProc};
  AudioDeviceID device_ = kAudioObjectUnknown;
};

TEST_F(PipeWireEngine, RoutesAreHeardBitForBit) {
  start();
  expectHeard();
  expectStopsInASecond(engine_);
}

TEST_F(PipeWireEngine, AServerThatDiesAndComesBackIsHeardAgainInTwoSeconds) {
  start();
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(runs(10s));
    die();
    const std::uint64_t cycles = engineCycles;
    server_.start();
    EXPECT_TRUE(eventually(kReturnBound, [&] { return engineCycles > cycles; })) << round;
    EXPECT_TRUE(eventually(kReturnBound, [&] { return isAlive(device_); })) << round;
    EXPECT_TRUE(engine_.isRunning());
  }
  expectHeard();
  EXPECT_EQ(deviceNamed(engine_, card_.name), device_);
  expectStopsInASecond(engine_);
}

TEST_F(PipeWireEngine, ADeadServersDeviceStopsInASecondAndStartsOnTheNext) {
  start();
  ASSERT_TRUE(runs(10s));
  die();
  expectStopsInASecond(engine_);
  server_.start();
  start();
  expectHeard();
}

TEST_F(PipeWireEngine, AStopRightAfterTheDeathIsInTime) {
  start();
  ASSERT_TRUE(runs(10s));
  server_.kill();
  expectStopsInASecond(engine_);
}

TEST_F(PipeWireEngine, ARemovedCardIsHeardAgainWhenItIsBack) {
  start();
  ASSERT_TRUE(runs(10s));
  PipeWireClient hardware;
  for (int round = 0; round < 3; ++round) {
    hardware.removeCard(card_);
    EXPECT_TRUE(eventually([&] { return !isAlive(device_); })) << round;
    hardware.addCard(card_);
    const std::uint64_t cycles = engineCycles;
    EXPECT_TRUE(eventually(kReturnBound, [&] { return engineCycles > cycles; })) << round;
    EXPECT_TRUE(eventually(kReturnBound, [&] { return isAlive(device_); })) << round;
  }
  expectHeard();
}

}  // namespace
}  // namespace tolvane::test
