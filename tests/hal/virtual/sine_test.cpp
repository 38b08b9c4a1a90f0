// The default signal of the virtual device's inputs: channel n carries a sine of 110 n Hz at -18 dBFS.
#include <cmath>
#include <mutex>
#include <numbers>

#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

const double kPeak = std::pow(10.0, -18.0 / 20.0);

/// Records every input channel, cycle after cycle.
class Recording {
 public:
  Recording(std::size_t channels, std::size_t frames) : channels_(channels), frames_(frames) {}

  void add(const AudioBufferList& input) {
    if (done()) return;
    std::size_t channel = 0;
    for (UInt32 b = 0; b < input.mNumberBuffers; ++b) {
      const AudioBuffer& buffer = input.mBuffers[b];
      const auto* const samples = static_cast<const float*>(buffer.mData);
      const std::size_t frames = buffer.mDataByteSize / sizeof(float) / buffer.mNumberChannels;
      for (UInt32 c = 0; c < buffer.mNumberChannels; ++c, ++channel) {
        for (std::size_t f = 0; f < frames; ++f) {
          channels_[channel].push_back(samples[f * buffer.mNumberChannels + c]);
        }
      }
    }
    recorded_.store(channels_[0].size());
  }

  [[nodiscard]] bool done() const { return recorded_.load() >= frames_; }
  [[nodiscard]] const std::vector<std::vector<float>>& channels() const { return channels_; }

 private:
  std::vector<std::vector<float>> channels_;
  std::size_t frames_;
  std::atomic<std::size_t> recorded_{0};
};

class VirtualSine : public VirtualDeviceTest {
 protected:
  std::vector<std::vector<float>> record(std::size_t channels, std::size_t frames) {
    Recording recording(channels, frames);
    run([&](const AudioBufferList& input, auto&) { recording.add(input); }, [&] { return recording.done(); });
    return recording.channels();
  }

  static void expectSines(const std::vector<std::vector<float>>& channels, double sampleRateHz) {
    for (std::size_t c = 0; c < channels.size(); ++c) {
      const double hz = 110.0 * static_cast<double>(c + 1);
      for (std::size_t f = 0; f < channels[c].size(); ++f) {
        const double turns = std::fmod(static_cast<double>(f) * hz / sampleRateHz, 1.0);
        const double wanted = kPeak * std::sin(2.0 * std::numbers::pi * turns);
        ASSERT_NEAR(static_cast<double>(channels[c][f]), wanted, 2e-7) << "channel " << c << ", frame " << f;
      }
    }
  }
};

TEST_F(VirtualSine, isExactAndContinuousOnEveryChannel) {
  const auto channels = record(18, 3 * 4800);
  expectSines(channels, 48000.0);
}

TEST_F(VirtualSine, repeatsBitForBit) {
  const auto channels = record(18, 2 * 4800 + 512);
  for (const auto& channel : channels) {
    for (std::size_t f = 4800; f < channel.size(); ++f) ASSERT_EQ(channel[f], channel[f - 4800]);
  }
}

TEST_F(VirtualSine, peaksAtMinus18) {
  const auto channels = record(18, 4800);
  for (const auto& channel : channels) {
    const float peak = *std::max_element(channel.begin(), channel.end());
    EXPECT_NEAR(20.0 * std::log10(static_cast<double>(peak)), -18.0, 0.01);
  }
}

TEST_F(VirtualSine, isExactAtOtherRates) {
  for (const double rate : {44100.0, 96000.0, 44101.0, 8000.0}) {
    hal::VirtualDeviceConfig config;
    config.sampleRateHz = rate;
    config.bufferFrames = 100;
    configure(config);
    expectSines(record(18, 1000), rate);
  }
}

TEST_F(VirtualSine, isExactAtARateThatIsNotWhole) {
  hal::VirtualDeviceConfig config;
  config.sampleRateHz = 44099.5;
  configure(config);
  expectSines(record(18, 4096), 44099.5);
}

TEST_F(VirtualSine, beginsAnewWithEachRun) {
  const auto first = record(18, 512);
  const auto second = record(18, 512);
  for (std::size_t f = 0; f < 512; ++f) ASSERT_EQ(first[0][f], second[0][f]);
}

}  // namespace

}  // namespace tolvane::test
