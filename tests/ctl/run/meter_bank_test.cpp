// The cycle count and the peaks around the routing callback.
#include "ctl/run/meter_bank.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/routing/routing_context.h"
#include "ctl/run/meter_readings.h"

namespace tolvane::ctl {
namespace {

/// A list of three buffers: two interleaved channels, one channel without data, one channel.
class ThreeBuffers {
 public:
  ThreeBuffers() {
    list()->mNumberBuffers = 3;
    list()->mBuffers[0] = {2, sizeof stereo, stereo};
    buffer(1) = {1, 0, nullptr};
    buffer(2) = {1, sizeof mono, mono};
  }
  AudioBufferList* list() { return reinterpret_cast<AudioBufferList*>(bytes_); }

  float stereo[6] = {0.1F, -0.5F, 0.2F, 0.25F, -0.3F, 0.0F};
  float mono[3] = {-0.75F, 0.5F, 0.25F};

 private:
  AudioBuffer& buffer(std::size_t i) {
    return *reinterpret_cast<AudioBuffer*>(bytes_ + offsetof(AudioBufferList, mBuffers) +
                                           i * sizeof(AudioBuffer));
  }
  alignas(AudioBufferList) std::byte bytes_[sizeof(AudioBufferList) + 2 * sizeof(AudioBuffer)] = {};
};

const std::vector<PatchConnection> kAll = {
    {0, 0, 1.0F, true}, {1, 1, 1.0F, true}, {2, 2, 1.0F, true}, {3, 3, 1.0F, true}};

TEST(MeterBank, TakesThePeakOfEachChannelOnce) {
  MeterBank bank(4, 4);
  bank.meter(kAll);
  ThreeBuffers input;
  ThreeBuffers output;
  output.mono[1] = 4.0F;
  bank.observe(input.list(), output.list());
  EXPECT_EQ(bank.takeInputPeak(0), 0.3F);
  EXPECT_EQ(bank.takeInputPeak(1), 0.5F);
  EXPECT_EQ(bank.takeInputPeak(2), 0.0F);
  EXPECT_EQ(bank.takeInputPeak(3), 0.75F);
  EXPECT_EQ(bank.takeOutputPeak(3), 4.0F);
  EXPECT_EQ(bank.takeInputPeak(3), 0.0F);
  EXPECT_EQ(bank.takeInputPeak(4), 0.0F);
  EXPECT_EQ(bank.cycles(), 1U);
}

TEST(MeterBank, KeepsTheHighestOfSeveralCycles) {
  MeterBank bank(4, 4);
  bank.meter(kAll);
  ThreeBuffers buffers;
  bank.observe(buffers.list(), nullptr);
  buffers.mono[0] = 0.1F;
  bank.observe(buffers.list(), nullptr);
  EXPECT_EQ(bank.takeInputPeak(3), 0.75F);
  EXPECT_EQ(bank.takeOutputPeak(3), 0.0F);
  EXPECT_EQ(bank.cycles(), 2U);
}

TEST(MeterBank, MetersTheRoutedChannelsOnly) {
  MeterBank bank(4, 4);
  ThreeBuffers buffers;
  bank.observe(buffers.list(), buffers.list());
  EXPECT_EQ(bank.takeInputPeak(0), 0.0F);
  const std::vector<PatchConnection> routes = {{0, 3, 1.0F, true}, {1, 1, 1.0F, false}, {-1, 9, 1.0F, true}};
  bank.meter(routes);
  bank.observe(buffers.list(), buffers.list());
  EXPECT_EQ(bank.takeInputPeak(0), 0.3F);
  EXPECT_EQ(bank.takeInputPeak(1), 0.0F);
  EXPECT_EQ(bank.takeOutputPeak(3), 0.75F);
  EXPECT_EQ(bank.takeOutputPeak(0), 0.0F);
}

TEST(MeterBank, ChannelsBeyondItsRoomAreLeftOut) {
  MeterBank bank(1, 1);
  bank.meter(kAll);
  ThreeBuffers buffers;
  bank.observe(buffers.list(), buffers.list());
  EXPECT_EQ(bank.takeInputPeak(0), 0.3F);
  EXPECT_EQ(bank.takeInputPeak(1), 0.0F);
}

TEST(MeterBank, ShowsWhatIsNotFinite) {
  MeterBank bank(4, 4);
  bank.meter(kAll);
  ThreeBuffers buffers;
  buffers.mono[0] = -std::numeric_limits<float>::infinity();
  buffers.stereo[0] = NAN;
  buffers.stereo[2] = std::numeric_limits<float>::infinity();
  bank.observe(buffers.list(), nullptr);
  EXPECT_EQ(bank.takeInputPeak(3), std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(bank.takeInputPeak(0)));
}

TEST(MeterBank, LosesNoPeakBetweenTheThreads) {
  MeterBank bank(4, 4);
  bank.meter(kAll);
  constexpr int kMeteredCycles = 20000;
  std::atomic<bool> ended{false};
  std::thread io([&] {
    ThreeBuffers buffers;
    for (int i = 1; i <= kMeteredCycles; ++i) {
      buffers.mono[0] = static_cast<float>(i);
      bank.observe(buffers.list(), nullptr);
    }
    ended = true;
  });
  float highest = 0.0F;
  while (!ended) highest = std::max(highest, bank.takeInputPeak(3));
  io.join();
  highest = std::max(highest, bank.takeInputPeak(3));
  EXPECT_EQ(highest, static_cast<float>(kMeteredCycles));
  EXPECT_EQ(bank.cycles(), static_cast<std::uint64_t>(kMeteredCycles));
}

TEST(MeteredIoProc, RoutesThenMeters) {
  IOProcContext context = initialContext(4, 4);
  const std::vector<PatchConnection> routes = {{3, 0, 2.0F, true}};
  writeConnections(&context, routes);
  MeterBank bank(4, 4);
  bank.meter(routes);
  setMeterBank(&bank);
  ThreeBuffers input;
  ThreeBuffers output;
  EXPECT_EQ(meteredIoProc(1, nullptr, input.list(), nullptr, output.list(), nullptr, &context), noErr);
  setMeterBank(nullptr);
  EXPECT_EQ(output.stereo[0], -1.5F);
  EXPECT_EQ(bank.takeInputPeak(3), 0.75F);
  EXPECT_EQ(bank.takeOutputPeak(0), 1.5F);
  EXPECT_EQ(meteredIoProc(1, nullptr, input.list(), nullptr, output.list(), nullptr, &context), noErr);
  EXPECT_EQ(bank.cycles(), 1U);
}

TEST(ReadMeters, NamesEachRoutedChannelOnceInOrder) {
  MeterBank bank(4, 2);
  const std::vector<PatchConnection> routes = {
      {3, 1, 1.0F, true}, {0, 1, 1.0F, true}, {3, 0, 1.0F, true}, {2, 0, 1.0F, false}, {7, 7, 1.0F, true}};
  bank.meter(routes);
  ThreeBuffers buffers;
  bank.observe(buffers.list(), buffers.list());
  MeterPicture picture;
  readMeters(bank, routes, {0, "Box", 4, 2}, {}, picture);
  ASSERT_EQ(picture.inputs.size(), 2U);
  EXPECT_EQ(picture.inputs[0].label, "in 1");
  EXPECT_EQ(picture.inputs[0].peak, 0.3F);
  EXPECT_EQ(picture.inputs[1].label, "in 4");
  EXPECT_EQ(picture.inputs[1].peak, 0.75F);
  ASSERT_EQ(picture.outputs.size(), 2U);
  EXPECT_EQ(picture.outputs[0].label, "out 1");
  EXPECT_EQ(picture.outputs[1].label, "out 2");
}

}  // namespace
}  // namespace tolvane::ctl
