// Changes the cycle length while the card is stopped and while it runs.
#include <atomic>

#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "hal/alsa/alsa_driver.h"
#include "hal/hal_client.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

TEST(AlsaBufferFrames, AreListedWithTheirRange) {
  const auto driver = hal::makeAlsaDriver();
  auto device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  EXPECT_LE(device->minBufferFrames, 64U);
  EXPECT_GE(device->maxBufferFrames, 1024U);
  EXPECT_LE(device->maxBufferFrames, 8192U);
  ASSERT_EQ(driver->setBufferFrames(*device, 1024), noErr);
  device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  EXPECT_EQ(device->bufferFrames, 1024U);
  RoutingClient client(*device, {});
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.cycles() >= 3; }));
}

TEST(AlsaBufferFrames, ChangeUnderARunningCallback) {
  const auto driver = hal::makeAlsaDriver();
  const auto device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  RoutingClient client(*device, {});
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  for (const std::uint32_t frames : {1024U, 128U, 256U, 2048U}) {
    ASSERT_EQ(driver->setBufferFrames(*device, frames), noErr);
    ASSERT_TRUE(eventually([&] { return client.bufferFrames() == frames; }));
    EXPECT_TRUE(eventually([&, before = client.cycles()] { return client.cycles() >= before + 5; }));
  }
  EXPECT_TRUE(client.isAlive());
}

}  // namespace
}  // namespace tolvane::test
