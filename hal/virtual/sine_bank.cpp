#include "hal/virtual/sine_bank.h"

#include <cmath>
#include <numbers>
#include <numeric>

namespace tolvane::hal {

namespace {

constexpr std::uint64_t kBaseHz = 110;
constexpr double kAmplitude = 0.12589254117941673;  // -18 dBFS
// At higher rates the table would cost more memory than it is worth.
constexpr double kMaxTableRateHz = 1e6;

float sineAt(double turns) noexcept {
  return static_cast<float>(kAmplitude * std::sin(2.0 * std::numbers::pi * turns));
}

}  // namespace

SineBank::SineBank(double sampleRateHz) : sampleRateHz_(sampleRateHz) {
  if (sampleRateHz > kMaxTableRateHz || sampleRateHz < 1.0 || sampleRateHz != std::floor(sampleRateHz))
    return;
  const auto rate = static_cast<std::uint64_t>(sampleRateHz);
  const std::uint64_t divisor = std::gcd(rate, kBaseHz);
  stepOfFirst_ = kBaseHz / divisor;
  table_.resize(rate / divisor);
  for (std::size_t i = 0; i < table_.size(); ++i) {
    table_[i] = sineAt(static_cast<double>(i) / static_cast<double>(table_.size()));
  }
}

void SineBank::fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept {
  std::uint64_t channel = 0;
  for (UInt32 b = 0; b < input.mNumberBuffers; ++b) {
    const AudioBuffer& buffer = input.mBuffers[b];
    for (UInt32 c = 0; c < buffer.mNumberChannels; ++c) {
      ++channel;
      if (buffer.mData == nullptr) continue;
      const Target to{static_cast<float*>(buffer.mData) + c, buffer.mNumberChannels};
      if (table_.empty()) {
        compute(channel, firstFrame, frames, to);
      } else {
        fillFromTable(channel, firstFrame, frames, to);
      }
    }
  }
}

void SineBank::fillFromTable(std::uint64_t channel, std::uint64_t firstFrame, std::uint32_t frames,
                             const Target& to) const noexcept {
  const std::size_t size = table_.size();
  const std::size_t step = channel * stepOfFirst_ % size;
  std::size_t at = firstFrame % size * step % size;
  float* sample = to.samples;
  for (std::uint32_t f = 0; f < frames; ++f, sample += to.stride) {
    *sample = table_[at];
    at += step;
    if (at >= size) at -= size;
  }
}

void SineBank::compute(std::uint64_t channel, std::uint64_t firstFrame, std::uint32_t frames,
                       const Target& to) const noexcept {
  const double turnsPerFrame = static_cast<double>(channel * kBaseHz) / sampleRateHz_;
  float* sample = to.samples;
  for (std::uint32_t f = 0; f < frames; ++f, sample += to.stride) {
    const double turns = static_cast<double>(firstFrame + f) * turnsPerFrame;
    *sample = sineAt(turns - std::floor(turns));
  }
}

}  // namespace tolvane::hal
