// The judge of recordings, on recordings whose faults are known.
#include "network/judge_tones.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "network/tones.h"

namespace tolvane::test {
namespace {

constexpr unsigned kTone = 4;
constexpr std::size_t kFrames = 3 * std::size_t{kRateHz};
constexpr std::size_t kMiddle = kFrames / 2;

/// One channel with the tone, from a clock that is faster by this much.
Sound toneAt(double ppm) {
  Sound sound{1, {}};
  const double step = 2.0 * std::numbers::pi * kTonesHz[kTone] / kRateHz * (1.0 + ppm * 1e-6);
  for (std::size_t frame = 1; frame <= kFrames; ++frame) {
    sound.samples.push_back(static_cast<float>(kToneAmplitude * std::sin(step * static_cast<double>(frame))));
  }
  return sound;
}

Verdict verdictOn(const Sound& sound, unsigned tone = kTone) {
  return judgeTones(sound, {tone}).at(0);
}

TEST(JudgeTones, FindsNothingWrongWithTheSignalItself) {
  Sound sound{kChannels, {}};
  std::vector<unsigned> tones;
  for (std::size_t frame = 1; frame <= kFrames; ++frame) {
    for (unsigned channel = 0; channel < kChannels; ++channel) {
      sound.samples.push_back(toneSample(channel, frame));
    }
  }
  for (unsigned channel = 0; channel < kChannels; ++channel) tones.push_back(channel);
  for (const Verdict& verdict : judgeTones(sound, tones)) {
    EXPECT_GT(verdict.worstBlockDb, 150.0);  // the noise of rounding to float
    EXPECT_EQ(verdict.longestSilenceMs, 0.0);
    EXPECT_EQ(verdict.unsteadyBlocks, 0U);
    EXPECT_NEAR(verdict.ownToneShare, 1.0, 0.001);
    EXPECT_NEAR(verdict.amplitude, kToneAmplitude, 1e-6);
    EXPECT_NEAR(verdict.seconds, 2.0, 0.001);  // without half a second at each end
  }
}

TEST(JudgeTones, MeasuresNoise) {
  Sound sound = toneAt(0.0);
  std::mt19937 random(1);
  // 80 dB below a sine of half scale.
  std::normal_distribution<float> noise(0.0F, static_cast<float>(kToneAmplitude / std::sqrt(2.0) * 1e-4));
  for (float& sample : sound.samples) sample += noise(random);
  EXPECT_NEAR(verdictOn(sound).signalToNoiseDb, 80.0, 0.1);
}

TEST(JudgeTones, MeasuresAClocksSpeed) {
  const Verdict verdict = verdictOn(toneAt(50.0));
  EXPECT_NEAR(verdict.meanSpeedPpm, 50.0, 0.01);
  EXPECT_EQ(verdict.unsteadyBlocks, 0U);
}

TEST(JudgeTones, FindsSilence) {
  Sound sound = toneAt(0.0);
  std::fill_n(sound.samples.begin() + kMiddle, 48, 0.0F);
  EXPECT_NEAR(verdictOn(sound).longestSilenceMs, 1.0, 0.03);
  EXPECT_GT(verdictOn(sound).unsteadyBlocks, 0U);
}

TEST(JudgeTones, FindsALostSample) {
  Sound sound = toneAt(0.0);
  sound.samples.erase(sound.samples.begin() + kMiddle);
  EXPECT_GT(verdictOn(sound).unsteadyBlocks, 0U);
  EXPECT_NEAR(verdictOn(sound).firstUnsteadySeconds, 1.5, 0.1);
}

TEST(JudgeTones, FindsARepeatedPacket) {
  Sound sound = toneAt(0.0);
  std::copy_n(sound.samples.begin() + kMiddle - 48, 48, sound.samples.begin() + kMiddle);
  EXPECT_GT(verdictOn(sound).unsteadyBlocks, 0U);
}

TEST(JudgeTones, FindsAnotherChannelsTone) {
  EXPECT_LT(verdictOn(toneAt(0.0), kTone + 1).ownToneShare, 0.01);
}

}  // namespace
}  // namespace tolvane::test
