// A server that is there and answers nothing.
#include <chrono>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"
#include "hal/promised_times.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

template <class Action>
std::chrono::steady_clock::duration timeOf(const Action& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - begin;
}

TEST(PipeWireHungServer, ItsDevicesAreLeftOutInTimeUntilItAnswersAgain) {
  PipeWireServer server({kCard});
  const auto driver = hal::makePipeWireDriver();
  ASSERT_EQ(listedDevices(*driver, 1).size(), 1U);
  server.hang();
  for (int call = 0; call < 5; ++call) {
    std::vector<hal::DeviceInfo> devices;
    EXPECT_LT(timeOf([&] { devices = driver->devices(); }), kListBound);
    EXPECT_THAT(devices, IsEmpty());
  }
  server.unhang();
  EXPECT_TRUE(eventually([&] { return driver->devices().size() == 1; }));
}

TEST(PipeWireHungServer, OneThatHangsBeforeItIsAskedAtAllHasNoDevices) {
  PipeWireServer server({kCard});
  server.hang();
  const auto driver = hal::makePipeWireDriver();
  std::vector<hal::DeviceInfo> devices;
  EXPECT_LT(timeOf([&] { devices = driver->devices(); }), kListBound);
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
  hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(eventually([&] { return client.cycles() != 0; }));
  server.hang();
  EXPECT_LT(timeOf([&] { started.session.reset(); }), kStopBound);
  const std::uint64_t cycles = client.cycles();
  server.unhang();
  PipeWireClient observer;
  EXPECT_TRUE(eventually([&] { return observer.linkCount() == 0; }));
  EXPECT_EQ(client.cycles(), cycles);
}

}  // namespace
}  // namespace tolvane::test
