// An aggregate whose member is the monitor of a sink: what other programs play becomes its inputs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

const PipeWireCard kGame{.name = "game", .outputs = 2};

constexpr const char* kShow = R"({"aggregates": [{"name": "Show", "members": [
    {"uid": "pipewire:card", "name": "card", "inputChannels": 4, "outputChannels": 4},
    {"uid": "pipewire:game.sink:monitor", "name": "game:monitor", "inputChannels": 2, "outputChannels": 0}]}]})";

class PipeWireMonitor : public ::testing::Test {
 protected:
  void SetUp() override {
    writeAggregates(server_, kShow);
    show_ = deviceNamed(*driver_, "Show");
    client_.emplace(show_, routes_);
    // The rig plays its channels 0 and 1 into the sink.
    for (unsigned n = 0; n < 2; ++n) rig_.client().link({"feeder", false, n}, {"game.sink", true, n});
    started_ = driver_->start(show_, *client_);
    ASSERT_EQ(started_.status, noErr);
  }

  PipeWireServer server_{{kCard, kGame}, PipeWirePace::patient};
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  hal::DeviceInfo show_;
  // Inputs 4 and 5 are the monitor. It carries the rig's channels 0 and 1.
  std::vector<PatchConnection> routes_{{4, 2, 1.0F, true}, {5, 0, 1.0F, true}, {3, 1, 1.0F, true}};
  PatchRig rig_{kCard, {{0, 2, 1.0F, true}, {1, 0, 1.0F, true}, {3, 1, 1.0F, true}}};
  std::optional<RoutingClient> client_;
  hal::StartResult started_;
};

TEST_F(PipeWireMonitor, IsHeardOnARoutedOutputEverySampleInItsCycle) {
  ASSERT_TRUE(rig_.settle());
  ASSERT_TRUE(rig_.waitForMuch());
  EXPECT_TRUE(rig_.isRight());
}

TEST_F(PipeWireMonitor, IsSilentWhileItsSinkIsAwayAndIsHeardAgain) {
  rig_.client().removeNode("game.sink");
  EXPECT_TRUE(eventually([&] {
    rig_.recorder().reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const auto received = rig_.recorder().received();
    return received[1].frames != 0 && received[1].rightFrames == received[1].frames &&
           received[2].missingFrames == received[2].frames;
  }));
  EXPECT_TRUE(client_->isAlive());
  rig_.client().addNode(nodesOf(kGame)[0]);
  for (unsigned n = 0; n < 2; ++n) rig_.client().link({"feeder", false, n}, {"game.sink", true, n});
  EXPECT_TRUE(rig_.settle());
}

TEST_F(PipeWireMonitor, IsNoDeviceOfTheList) {
  const auto devices = plainDevices(*driver_, 2);
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].uid, "pipewire:card");
  EXPECT_EQ(devices[0].monitorChannels, 4U);
  EXPECT_EQ(devices[1].uid, "pipewire:game.sink");
  EXPECT_EQ(devices[1].monitorChannels, 2U);
  EXPECT_THAT(devices[1].inputStreams, ::testing::IsEmpty());
}

}  // namespace
}  // namespace tolvane::test
