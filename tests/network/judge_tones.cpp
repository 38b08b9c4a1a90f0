#include "network/judge_tones.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "network/sine_fit.h"
#include "network/tones.h"

namespace tolvane::test {

namespace {

// A block is short enough for a frequency that is steered slowly to count as constant in it. Each block
// overlaps the next by half, so that no jump hides between two.
constexpr std::size_t kBlockFrames = 4096;
constexpr std::size_t kBlockStep = kBlockFrames / 2;
constexpr std::size_t kShortBlockFrames = 480;
// A recorder starts with silence until it is linked, and its links come one by one.
constexpr std::size_t kSkippedFrames = kRateHz / 2;
// A jump of a tenth of a sample in the slowest tone leaves more than this.
constexpr double kUnsteadyResidual = 1e-3 * kToneAmplitude;

struct Totals {
  double signal = 0.0;
  double noise = 0.0;
  double worst = std::numeric_limits<double>::infinity();
  double amplitudes = 0.0;
  double speeds = 0.0;
  std::size_t blocks = 0;
};

double decibels(double signal, double noise) {
  return 10.0 * std::log10(signal / std::max(noise, std::numeric_limits<double>::min()));
}

class ChannelJudge {
 public:
  ChannelJudge(const Sound& recording, unsigned channel, double toneHz)
      : recording_(recording), channel_(channel), nominalStep_(2.0 * std::numbers::pi * toneHz / kRateHz) {
    verdict_.toneHz = toneHz;
    step_ = nominalStep_;
  }

  Verdict judge() {
    const std::size_t frames = recording_.samples.size() / recording_.channels;
    std::size_t start = 0;
    while (start < frames && sample(start) == 0.0) ++start;
    start = std::min(frames, start + kSkippedFrames);
    const std::size_t end = std::max(start, frames - std::min(frames, kSkippedFrames));
    verdict_.seconds = static_cast<double>(end - start) / kRateHz;
    measureSilence(start, end);
    measureOwnTone(start, end);
    for (std::size_t block = start; block + kBlockFrames <= end; block += kBlockStep) judgeBlock(block);
    finish();
    return verdict_;
  }

 private:
  [[nodiscard]] double sample(std::size_t frame) const {
    return static_cast<double>(recording_.samples[frame * recording_.channels + channel_]);
  }

  void measureSilence(std::size_t start, std::size_t end) {
    std::size_t longest = 0;
    std::size_t silent = 0;
    for (std::size_t frame = start; frame < end; ++frame) {
      silent = sample(frame) == 0.0 ? silent + 1 : 0;
      longest = std::max(longest, silent);
    }
    // A tone may itself pass through zero.
    verdict_.longestSilenceMs = longest < 2 ? 0.0 : 1000.0 * static_cast<double>(longest) / kRateHz;
  }

  /// In blocks that are so short that a wrong speed hardly counts.
  void measureOwnTone(std::size_t start, std::size_t end) {
    double all = 0.0;
    double own = 0.0;
    for (std::size_t block = start; block + kShortBlockFrames <= end; block += kShortBlockFrames) {
      double cosine = 0.0;
      double sine = 0.0;
      for (std::size_t i = 0; i < kShortBlockFrames; ++i) {
        const double value = sample(block + i);
        all += value * value;
        cosine += value * std::cos(nominalStep_ * static_cast<double>(i));
        sine += value * std::sin(nominalStep_ * static_cast<double>(i));
      }
      own += 2.0 * (cosine * cosine + sine * sine) / static_cast<double>(kShortBlockFrames);
    }
    verdict_.ownToneShare = all > 0.0 ? own / all : 0.0;
  }

  void judgeBlock(std::size_t start) {
    const Sine sine = fitSine([&](std::size_t i) { return sample(start + i); }, kBlockFrames, step_);
    double noise = 0.0;
    double largest = 0.0;
    for (std::size_t i = 0; i < kBlockFrames; ++i) {
      const double middle = 0.5 * static_cast<double>(kBlockFrames - 1);
      const double residual = sample(start + i) - sine.at(static_cast<double>(i) - middle);
      noise += residual * residual;
      largest = std::max(largest, std::abs(residual));
    }
    if (largest > kUnsteadyResidual || sine.amplitude() < 0.5 * kToneAmplitude) {
      noteUnsteady(start);
      return;
    }
    note(sine, noise / static_cast<double>(kBlockFrames));
  }

  void noteUnsteady(std::size_t start) {
    if (verdict_.unsteadyBlocks++ == 0) verdict_.firstUnsteadySeconds = static_cast<double>(start) / kRateHz;
  }

  void note(const Sine& sine, double noise) {
    step_ = sine.stepRadians;
    const double signal = 0.5 * sine.amplitude() * sine.amplitude();
    const double speedPpm = 1e6 * (step_ / nominalStep_ - 1.0);
    const bool isFirst = totals_.blocks++ == 0;
    verdict_.lowestSpeedPpm = isFirst ? speedPpm : std::min(verdict_.lowestSpeedPpm, speedPpm);
    verdict_.highestSpeedPpm = isFirst ? speedPpm : std::max(verdict_.highestSpeedPpm, speedPpm);
    totals_.signal += signal;
    totals_.noise += noise;
    totals_.worst = std::min(totals_.worst, decibels(signal, noise));
    totals_.amplitudes += sine.amplitude();
    totals_.speeds += speedPpm;
  }

  void finish() {
    if (totals_.blocks == 0) return;
    const auto blocks = static_cast<double>(totals_.blocks);
    verdict_.amplitude = totals_.amplitudes / blocks;
    verdict_.signalToNoiseDb = decibels(totals_.signal, totals_.noise);
    verdict_.worstBlockDb = totals_.worst;
    verdict_.meanSpeedPpm = totals_.speeds / blocks;
  }

  const Sound& recording_;
  unsigned channel_;
  double nominalStep_;
  double step_ = 0.0;
  Totals totals_;
  Verdict verdict_;
};

}  // namespace

std::vector<Verdict> judgeTones(const Sound& recording, const std::vector<unsigned>& tones) {
  std::vector<Verdict> verdicts;
  for (unsigned channel = 0; channel < std::min<std::size_t>(recording.channels, tones.size()); ++channel) {
    verdicts.push_back(ChannelJudge(recording, channel, kTonesHz.at(tones[channel])).judge());
  }
  return verdicts;
}

}  // namespace tolvane::test
