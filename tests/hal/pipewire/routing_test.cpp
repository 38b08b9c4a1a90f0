// Routed audio through a private server: every sample, on the right output, in the right cycle.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

/// One audible route to each output, with the inputs in another order than the outputs.
std::vector<PatchConnection> crossed(unsigned inputs, unsigned outputs) {
  std::vector<PatchConnection> routes;
  for (unsigned n = 0; n < outputs; ++n) {
    const unsigned input = (n * 5 + 3) % inputs;
    routes.push_back({static_cast<std::int64_t>(input), static_cast<std::int64_t>(n), 1.0F, true});
  }
  // Fill up to 64 with routes of gain 0. They are mixed in like any others and must not be heard.
  for (unsigned n = 0; routes.size() < 64; ++n) {
    routes.push_back(
        {static_cast<std::int64_t>(n % inputs), static_cast<std::int64_t>(n % outputs), 0.0F, true});
  }
  return routes;
}

struct Size {
  unsigned inputs;
  unsigned outputs;
};

class PipeWireRouting : public ::testing::TestWithParam<Size> {};

TEST_P(PipeWireRouting, EverySampleOnItsOutputInItsCycleWhileTheQuantumChanges) {
  const auto [inputs, outputs] = GetParam();
  const PipeWireCard card{.name = "card", .inputs = inputs, .outputs = outputs, .cardId = 900};
  const PipeWireServer server({card}, PipeWirePace::patient);
  const auto driver = hal::makePipeWireDriver();
  const auto devices = listedDevices(*driver, 1);
  ASSERT_EQ(devices.size(), 1U);
  const auto routes = crossed(inputs, outputs);
  ASSERT_EQ(routes.size(), 64U);
  RoutingClient client(devices[0], routes);
  PatchRig rig(card, {routes.begin(), routes.begin() + outputs});
  const hal::StartResult started = driver->start(devices[0], client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(rig.settle());
  for (const std::uint32_t quantum : {64U, 1024U, 256U}) {
    ASSERT_TRUE(rig.changeQuantum(quantum));
    ASSERT_TRUE(rig.waitForMuch());
    EXPECT_EQ(client.bufferFrames(), quantum);
    EXPECT_TRUE(rig.isRight());
  }
  EXPECT_TRUE(client.isAlive());
}

INSTANTIATE_TEST_SUITE_P(Sizes, PipeWireRouting, ::testing::Values(Size{8, 8}, Size{18, 20}, Size{64, 64}),
                         [](const ::testing::TestParamInfo<Size>& size) {
                           return std::to_string(size.param.inputs) + "x" +
                                  std::to_string(size.param.outputs);
                         });

TEST(PipeWireRoutingPace, AServerAtTheMachinesPaceGivesTheSuggestedCycleAndTheServersRate) {
  const PipeWireCard card{.name = "card", .inputs = 2, .outputs = 2, .cardId = 900};
  const PipeWireServer server({card});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  const auto routes = straightThrough(2);
  RoutingClient client(device, routes);
  PatchRig rig(card, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(rig.settle());
  EXPECT_EQ(client.bufferFrames(), 256U);
  EXPECT_EQ(client.sampleRateHz(), 48000.0);
}

TEST(PipeWireRoutingPace, TheCycleLengthCanBeSetBeforeAndWhileItRuns) {
  const PipeWireCard card{.name = "card", .inputs = 2, .outputs = 2, .cardId = 900};
  const PipeWireServer server({card});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  EXPECT_EQ(device.minBufferFrames, 32U);
  EXPECT_EQ(device.maxBufferFrames, 2048U);
  ASSERT_EQ(driver->setBufferFrames(device, 512), noErr);
  EXPECT_EQ(onlyDevice(*driver).bufferFrames, 512U);
  RoutingClient client(device, {});
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 512; }));
  ASSERT_EQ(driver->setBufferFrames(device, 128), noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 128; }));
}

TEST(PipeWireRoutingPace, AnotherRateLeavesTheCycleLength) {
  const PipeWireCard card{.name = "card", .inputs = 2, .outputs = 2, .cardId = 900};
  const PipeWireServer server({card});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  RoutingClient client(device, {});
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  PipeWireClient user;
  for (const int rateHz : {96000, 44100, 48000}) {
    user.setSetting("clock.force-rate", std::to_string(rateHz));
    ASSERT_TRUE(eventually([&] { return client.sampleRateHz() == rateHz; })) << rateHz;
    EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 256; })) << rateHz;
  }
}

TEST(PipeWireRoutingPace, TheUsersOwnSettingOverridesOurs) {
  const PipeWireCard card{.name = "card", .inputs = 2, .outputs = 2, .cardId = 900};
  const PipeWireServer server({card});
  ::setenv("PIPEWIRE_LATENCY", "128/48000", 1);
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  RoutingClient client(device, {});
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 128; }));
  PipeWireClient user;
  user.setSetting("clock.force-rate", "96000");
  EXPECT_TRUE(eventually([&] { return client.sampleRateHz() == 96000.0; }));
  EXPECT_TRUE(eventually([&] { return client.bufferFrames() == 256; }));  // the same duration
  ::unsetenv("PIPEWIRE_LATENCY");
}

TEST(PipeWireRoutingPace, AfterAStopTheClientIsCalledNoMoreAndNothingOfOursIsLeft) {
  const PipeWireCard card{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900};
  const PipeWireServer server({card});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  PipeWireClient observer;
  const auto nodesBefore = observer.nodeNames();
  for (int run = 0; run < 20; ++run) {
    RoutingClient client(device, {});
    hal::StartResult started = driver->start(device, client);
    ASSERT_EQ(started.status, noErr);
    ASSERT_TRUE(eventually([&] { return client.cycles() != 0; }));
    started.session.reset();
    const std::uint64_t cycles = client.cycles();
    EXPECT_TRUE(eventually([&] { return observer.linkCount() == 0; }));
    EXPECT_TRUE(eventually([&] { return observer.nodeNames() == nodesBefore; }));
    EXPECT_EQ(client.cycles(), cycles);
  }
}

TEST(PipeWireRoutingPace, ADeviceThatIsNotThereIsABadDevice) {
  const PipeWireServer server({{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900}});
  const auto driver = hal::makePipeWireDriver();
  hal::DeviceInfo device = onlyDevice(*driver);
  RoutingClient client(device, {});
  hal::DeviceInfo other = device;
  other.uid = "pipewire:other";
  EXPECT_EQ(driver->start(other, client).status, kAudioHardwareBadDeviceError);
  hal::DeviceInfo stale = device;
  stale.inputStreams.push_back(1);
  EXPECT_EQ(driver->start(stale, client).status, kAudioHardwareBadDeviceError);
  EXPECT_EQ(client.cycles(), 0U);
}

}  // namespace
}  // namespace tolvane::test
