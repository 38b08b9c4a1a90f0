// A server that is there but does not answer.
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"
#include "hal/promised_times.h"
#include "support/stall_watch.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;

TEST(PipeWireHungServer, ItsDevicesAreLeftOutInTimeUntilItAnswersAgain) {
  PipeWireServer server({kCard});
  const auto driver = hal::makePipeWireDriver();
  ASSERT_EQ(listedDevices(*driver, 1).size(), 1U);
  server.hang();
  for (int call = 0; call < 5; ++call) {
    std::vector<hal::DeviceInfo> devices;
    expectWithin(kListBound, [&] { return timeOf([&] { devices = driver->devices(); }); });
    EXPECT_THAT(devices, IsEmpty());
  }
  server.unhang();
  EXPECT_TRUE(eventually([&] { return driver->devices().size() == 1; }));
}

TEST(PipeWireHungServer, OneThatHangsBeforeItIsAskedAtAllHasNoDevices) {
  PipeWireServer server({kCard});
  server.hang();
  std::unique_ptr<hal::Driver> driver;
  std::vector<hal::DeviceInfo> devices;
  expectWithin(kListBound, [&] {
    driver = hal::makePipeWireDriver();
    return timeOf([&] { devices = driver->devices(); });
  });
  EXPECT_THAT(devices, IsEmpty());
  server.unhang();
  EXPECT_TRUE(eventually([&] { return driver->devices().size() == 1; }));
}

TEST(PipeWireHungServer, AStartIsRefusedAsNotReady) {
  PipeWireServer server({kCard});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  server.hang();
  RoutingClient client(device, {});
  EXPECT_EQ(driver->start(device, client).status, kAudioHardwareNotReadyError);
  server.unhang();
  EXPECT_TRUE(eventually([&] { return driver->devices().size() == 1; }));
  EXPECT_EQ(client.cycles(), 0U);
}

TEST(PipeWireHungServer, AStopEndsInTimeAndTheClientIsCalledNoMore) {
  PipeWireServer server({kCard});
  const auto driver = hal::makePipeWireDriver();
  const auto device = onlyDevice(*driver);
  RoutingClient client(device, {});
  std::uint64_t cycles = 0;
  expectWithin(kStopBound, [&] {
    hal::StartResult started = driver->start(device, client);
    EXPECT_EQ(started.status, noErr);
    EXPECT_TRUE(eventually([&] { return client.cycles() != cycles; }));
    server.hang();
    const auto time = timeOf([&] { started.session.reset(); });
    cycles = client.cycles();
    server.unhang();
    return time;
  });
  PipeWireClient observer;
  EXPECT_TRUE(eventually([&] { return observer.linkCount() == 0; }));
  EXPECT_EQ(client.cycles(), cycles);
}

}  // namespace
}  // namespace tolvane::test
