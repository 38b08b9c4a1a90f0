// The machine's cards as devices.
#include <algorithm>

#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "alsa_guest/loopback_bench.h"
#include "hal/alsa/alsa_driver.h"

namespace tolvane::test {
namespace {

using hal::StreamLayout;

TEST(AlsaEnumeration, ListsEveryCardOnceWithBothDirections) {
  const auto driver = hal::makeAlsaDriver();
  const auto devices = driver->devices();
  std::vector<std::string> uids;
  for (const auto& device : devices) uids.push_back(device.uid);
  std::sort(uids.begin(), uids.end());
  EXPECT_EQ(uids, (std::vector<std::string>{"alsa:Dummy", "alsa:Intel", "alsa:Loopback"}));
  const auto loopback = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(loopback);
  EXPECT_EQ(loopback->name, "Loopback");
  EXPECT_EQ(loopback->transportType, UInt32{kAudioDeviceTransportTypeAlsa});
  EXPECT_EQ(loopback->inputStreams, StreamLayout(32, 1));
  EXPECT_EQ(loopback->outputStreams, StreamLayout(32, 1));
  EXPECT_EQ(loopback->sampleRateHz, 48000.0);
  EXPECT_EQ(loopback->bufferFrames, 256U);
  const auto intel = find(*driver, "alsa:Intel");
  ASSERT_TRUE(intel);
  EXPECT_EQ(intel->inputStreams, StreamLayout(2, 1));
  EXPECT_EQ(intel->outputStreams, StreamLayout(2, 1));
  EXPECT_EQ(intel->sampleRateHz, 48000.0);
}

TEST(AlsaEnumeration, CallsTheChannelsAsTheCardsDriverDoes) {
  const auto driver = hal::makeAlsaDriver();
  const auto intel = find(*driver, "alsa:Intel");
  ASSERT_TRUE(intel);
  const std::vector<hal::ChannelInfo> stereo{{.name = "FL"}, {.name = "FR"}};
  EXPECT_EQ(intel->outputs, stereo);
  EXPECT_EQ(intel->inputs, stereo);
  const auto loopback = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(loopback);
  EXPECT_TRUE(loopback->inputs.empty());  // its driver names none
}

TEST(AlsaEnumeration, ListsTheChannelsThatTheCardCanDoNow) {
  const LoopbackBench bench(SND_PCM_FORMAT_S32_LE, 12);
  const auto driver = hal::makeAlsaDriver();
  const auto loopback = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(loopback);
  EXPECT_EQ(loopback->inputStreams.size(), 12U);
  EXPECT_EQ(loopback->outputStreams.size(), 12U);
}

}  // namespace
}  // namespace tolvane::test
