#include "ctl/control/level_bank.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace tolvane::ctl::control {

namespace {

std::atomic<LevelBank*> currentLevelBank{nullptr};

constexpr double kLoadIntervalNs = 1e9;

/// The frames of a cycle; 0 if no buffer of the list has data.
std::uint64_t framesOf(const AudioBufferList* list) noexcept {
  if (list == nullptr) return 0;
  for (UInt32 b = 0; b < list->mNumberBuffers; ++b) {
    const AudioBuffer& buffer = list->mBuffers[b];
    if (buffer.mNumberChannels > 0 && buffer.mDataByteSize > 0)
      return buffer.mDataByteSize / (buffer.mNumberChannels * sizeof(float));
  }
  return 0;
}

float finite(double level) {
  constexpr float kLargest = std::numeric_limits<float>::max();
  return level <= static_cast<double>(kLargest) ? static_cast<float>(level) : kLargest;  // also for NaN
}

}  // namespace

LevelBank::LevelBank(std::size_t inputs, std::size_t outputs, double sampleRateHz)
    : inputs_(inputs),
      outputs_(outputs),
      toldInputs_(inputs),
      toldOutputs_(outputs),
      sampleRateHz_(sampleRateHz) {}

void LevelBank::observe(const AudioBufferList* input, const AudioBufferList* output,
                        std::chrono::nanoseconds callbackTime) noexcept {
  const std::uint32_t asked = asked_.load(std::memory_order_acquire);
  if (asked != answered_.load(std::memory_order_relaxed)) {
    std::copy(inputs_.begin(), inputs_.end(), toldInputs_.begin());
    std::copy(outputs_.begin(), outputs_.end(), toldOutputs_.begin());
    std::fill(inputs_.begin(), inputs_.end(), Sum{});
    std::fill(outputs_.begin(), outputs_.end(), Sum{});
    answered_.store(asked, std::memory_order_release);
  }
  observe(input, inputs_);
  observe(output, outputs_);
  noteTime(std::max(framesOf(output), framesOf(input)), callbackTime);
}

void LevelBank::observe(const AudioBufferList* list, std::vector<Sum>& sums) noexcept {
  if (list == nullptr) return;
  std::size_t number = 0;  // channel across all buffers, including those without data
  for (UInt32 b = 0; b < list->mNumberBuffers && number < sums.size(); ++b) {
    const AudioBuffer& buffer = list->mBuffers[b];
    const std::size_t stride = buffer.mNumberChannels;
    const std::size_t end = std::min(sums.size(), number + stride);
    const auto* first = static_cast<const float*>(buffer.mData);
    for (; number < end && first != nullptr; ++number, ++first)
      add(sums[number], first, buffer.mDataByteSize / (stride * sizeof(float)), stride);
    number = end;
  }
}

void LevelBank::add(Sum& sum, const float* first, std::size_t frames, std::size_t stride) noexcept {
  std::uint32_t peak = sum.peakBits;
  float energies[4] = {};  // four sums, so that no addition waits for the previous one
  for (std::size_t f = 0; f < frames; ++f) {
    const float sample = first[f * stride];
    peak = std::max(peak, std::bit_cast<std::uint32_t>(sample) & 0x7FFFFFFFU);
    energies[f % 4] += sample * sample;
  }
  sum.peakBits = peak;
  for (const float energy : energies) sum.energy += static_cast<double>(energy);
  sum.frames += frames;
}

void LevelBank::noteTime(std::uint64_t frames, std::chrono::nanoseconds time) noexcept {
  if (frames == 0) return;
  const double periodNs =
      static_cast<double>(frames) * 1e9 / std::max(1.0, sampleRateHz_.load(std::memory_order_relaxed));
  const double load = static_cast<double>(time.count()) / std::max(1.0, periodNs);
  busyNs_.fetch_add(static_cast<std::uint64_t>(time.count()), std::memory_order_relaxed);
  frames_.fetch_add(frames, std::memory_order_relaxed);
  if (load > 1.0) overloads_.fetch_add(1, std::memory_order_relaxed);
  // If the main thread takes the peak at the same moment, the older peak may be reported for longer.
  if (load > peakLoad_.load(std::memory_order_relaxed)) peakLoad_.store(load, std::memory_order_relaxed);
}

void LevelBank::ask() {
  // An answer that has not been taken would be overwritten.
  const std::uint32_t asked = asked_.load(std::memory_order_relaxed);
  if (answered_.load(std::memory_order_acquire) != asked || taken_ != asked) return;
  asked_.store(asked + 1, std::memory_order_release);
}

std::optional<Meters> LevelBank::take() {
  const std::uint32_t answered = answered_.load(std::memory_order_acquire);
  if (answered != asked_.load(std::memory_order_relaxed) || answered == taken_) return std::nullopt;
  taken_ = answered;
  return Meters{levelsOf(toldInputs_), levelsOf(toldOutputs_)};
}

std::vector<Level> LevelBank::levelsOf(const std::vector<Sum>& sums) {
  std::vector<Level> levels(sums.size());
  std::transform(sums.begin(), sums.end(), levels.begin(), [](const Sum& sum) {
    const auto frames = static_cast<double>(std::max<std::uint64_t>(1, sum.frames));
    return Level{.peak = finite(static_cast<double>(std::bit_cast<float>(sum.peakBits))),
                 .rms = finite(std::sqrt(sum.energy / frames)),
                 .isClipped = sum.peakBits >= std::bit_cast<std::uint32_t>(1.0F)};
  });
  return levels;
}

LoadReading LevelBank::load() noexcept {
  const std::uint64_t busyNs = busyNs_.load(std::memory_order_relaxed);
  const std::uint64_t frames = frames_.load(std::memory_order_relaxed);
  const double elapsedNs = static_cast<double>(frames - framesBefore_) * 1e9 /
                           std::max(1.0, sampleRateHz_.load(std::memory_order_relaxed));
  LoadReading reading{lastLoad_.mean, peakLoad_.load(std::memory_order_relaxed),
                      overloads_.load(std::memory_order_relaxed)};
  const bool isFirst = framesBefore_ == 0;
  const bool isOver = elapsedNs >= kLoadIntervalNs;
  if ((isFirst || isOver) && elapsedNs > 0.0)
    reading.mean = static_cast<double>(busyNs - busyNsBefore_) / elapsedNs;
  if (isOver) {
    reading.peak = peakLoad_.exchange(0.0, std::memory_order_relaxed);
    lastLoad_ = reading;
    busyNsBefore_ = busyNs;
    framesBefore_ = frames;
  }
  reading.peak = std::max(reading.peak, lastLoad_.peak);
  return reading;
}

void setLevelBank(LevelBank* bank) noexcept {
  currentLevelBank.store(bank, std::memory_order_release);
}

LevelBank* levelBank() noexcept {
  return currentLevelBank.load(std::memory_order_acquire);
}

}  // namespace tolvane::ctl::control
