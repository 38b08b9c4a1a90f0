// Audio through a card and the program's routing, in both directions at once: every sample on its output, bit
// for bit.
#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "alsa_guest/loopback_bench.h"
#include "hal/alsa/alsa_driver.h"
#include "hal/hal_client.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

/// Routes input n to the n-th output from the end.
std::vector<PatchConnection> reversed(std::size_t channels) {
  std::vector<PatchConnection> routes;
  for (std::size_t n = 0; n < channels; ++n) {
    const auto input = static_cast<std::int64_t>(n);
    routes.push_back({input, static_cast<std::int64_t>(channels) - 1 - input, 1.0F, true});
  }
  return routes;
}

struct Wire {
  snd_pcm_format_t format;
  unsigned channels;
};

constexpr std::uint32_t kPeriodFrames = 1024;
constexpr std::uint64_t kFrames = 48000;  // to come out without a break

class AlsaRouting : public testing::TestWithParam<Wire> {};

TEST_P(AlsaRouting, EverySampleComesOutWhereItIsRouted) {
  const auto [format, channels] = GetParam();
  const LoopbackBench bench(format, channels);
  const auto driver = hal::makeAlsaDriver();
  auto device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  // A long period gives the emulated machine more time.
  ASSERT_EQ(driver->setBufferFrames(*device, kPeriodFrames), noErr);
  device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  ASSERT_EQ(device->bufferFrames, kPeriodFrames);
  ASSERT_EQ(device->inputStreams.size(), channels);
  ASSERT_EQ(device->outputStreams.size(), channels);
  RoutingClient client(*device, reversed(channels));
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return bench.recorded().longestRun() >= kFrames; }));
  started.session.reset();
  const FrameChecker recorded = bench.recorded();
  // The signal breaks when the machine is late. Each lateness must have been reported. It costs at most an
  // end, a stale piece of the ring with the period being written then, and a beginning.
  const std::uint64_t late = client.overloads() + bench.xruns();
  EXPECT_LE(recorded.bad(), late * kPeriodFrames);
  EXPECT_LE(recorded.breaks(), 1 + 4 * late);
  EXPECT_TRUE(client.isAlive());
  std::printf("%u channels: %llu frames, %llu not of the signal, %llu breaks, late %u and %u times\n",
              channels, static_cast<unsigned long long>(recorded.good()),
              static_cast<unsigned long long>(recorded.bad()),
              static_cast<unsigned long long>(recorded.breaks()), client.overloads(), bench.xruns());
}

INSTANTIATE_TEST_SUITE_P(FormatsAndChannels, AlsaRouting,
                         testing::Values(Wire{SND_PCM_FORMAT_FLOAT_LE, 8}, Wire{SND_PCM_FORMAT_S16_LE, 8},
                                         Wire{SND_PCM_FORMAT_S24_LE, 8}, Wire{SND_PCM_FORMAT_S24_3LE, 8},
                                         Wire{SND_PCM_FORMAT_S32_LE, 8}, Wire{SND_PCM_FORMAT_FLOAT_LE, 32},
                                         Wire{SND_PCM_FORMAT_S16_LE, 32}),
                         [](const auto& wire) {
                           return std::string(snd_pcm_format_name(wire.param.format)) + "_" +
                                  std::to_string(wire.param.channels);
                         });

TEST(AlsaRoutingOnHardware, AnHdaCardRunsBothWays) {
  const auto driver = hal::makeAlsaDriver();
  const auto device = find(*driver, "alsa:Intel");
  ASSERT_TRUE(device);
  RoutingClient client(*device, reversed(2));
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.cycles() >= 50; }));
  started.session.reset();
  const std::uint64_t cycles = client.cycles();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(client.cycles(), cycles);
  EXPECT_EQ(pcmStatus("Intel", "pcm0p"), "closed\n");
  EXPECT_EQ(pcmStatus("Intel", "pcm0c"), "closed\n");
}

}  // namespace
}  // namespace tolvane::test
