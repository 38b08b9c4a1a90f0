#include "ctl/soak/checker.h"

#include <algorithm>
#include <bit>
#include <chrono>

#include "ctl/soak/signal.h"
#include "ctl/terminal/decimal.h"

namespace tolvane::ctl {

namespace {

std::atomic<SoakChecker*> currentChecker{nullptr};

std::int64_t steadyNs() noexcept {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

std::size_t framesOf(const AudioBufferList& output) noexcept {
  if (output.mNumberBuffers == 0 || output.mBuffers[0].mNumberChannels == 0) return 0;
  return output.mBuffers[0].mDataByteSize / (output.mBuffers[0].mNumberChannels * sizeof(float));
}

bool differs(float one, float other) noexcept {
  return std::bit_cast<std::uint32_t>(one) != std::bit_cast<std::uint32_t>(other);
}

/// Enough for a list with a buffer for each channel.
std::size_t listBytes(std::size_t channels) noexcept {
  return offsetof(AudioBufferList, mBuffers) + (channels + 1) * sizeof(AudioBuffer);
}

}  // namespace

SoakChecker::SoakChecker(std::size_t inputs, std::size_t outputs, double sampleRateHz,
                         AudioDeviceIOProc routing)
    : inputs_(std::min<std::size_t>(inputs, kSignalChannels)),
      sampleRateHz_(sampleRateHz),
      routing_(routing),
      loops_(inputs, outputs),
      deviceInputs_(inputs),
      deviceOutputs_(outputs),
      planes_(inputs_ * kMostFrames),
      streams_(inputs_ * kMostFrames),
      listMemory_(listBytes(inputs_)),
      wanted_(kMostFrames) {}

SoakCounts SoakChecker::counts() const noexcept {
  const auto value = [](const Counter& count) { return count.load(std::memory_order_relaxed); };
  return {value(counters_.cycles),     value(counters_.frames), value(counters_.uncheckedCycles),
          value(counters_.right),      value(counters_.wrong),  value(counters_.longCallbacks),
          value(counters_.lateCycles), value(counters_.gaps),   value(counters_.gapFrames)};
}

std::optional<std::string> SoakChecker::firstWrong() const {
  if (!hasFirstWrong_.load(std::memory_order_acquire)) return std::nullopt;
  const WrongSample& wrong = firstWrong_;
  return "cycle " + std::to_string(wrong.cycle + 1) + ", output " + std::to_string(wrong.output + 1) +
         ", frame " + std::to_string(wrong.frame + 1) + ": " + shortestDecimal(wrong.found) + " instead of " +
         shortestDecimal(wrong.wanted);
}

OSStatus SoakChecker::cycle(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                            const AudioTimeStamp* inputTime, AudioBufferList* output,
                            const AudioTimeStamp* outputTime, void* clientData) noexcept {
  const CycleScope scope(cycleMarks_);
  const std::int64_t beginNs = steadyNs();
  const std::size_t frames = output == nullptr ? 0 : framesOf(*output);
  const std::uint64_t first = counters_.frames.load(std::memory_order_relaxed);
  noteBegin(now, beginNs, frames);
  add(counters_.cycles, 1);
  add(counters_.frames, frames);
  if (frames == 0 || frames > kMostFrames || input == nullptr) {
    add(counters_.uncheckedCycles, 1);
    return routing_(device, now, input, inputTime, output, outputTime, clientData);
  }
  const AudioBufferList* const signals = makeSignals(*input, first, frames);
  const std::uint64_t lowest = tables_.confirmed();
  const std::int64_t routedFromNs = steadyNs();
  const OSStatus status = routing_(device, now, signals, inputTime, output, outputTime, clientData);
  const auto routingNs = static_cast<std::uint64_t>(steadyNs() - routedFromNs);
  const std::uint64_t highest = tables_.announced();

  callbackTimes_.add(routingNs);
  if (static_cast<double>(routingNs) > static_cast<double>(frames) * 1e9 / sampleRateHz_)
    add(counters_.longCallbacks, 1);
  deviceInputs_.read(input);
  deviceOutputs_.read(output);
  compareWith(lowest, highest, frames);
  loops_.cycle(first, frames, deviceInputs_.all(), deviceOutputs_.all());
  return status;
}

void SoakChecker::noteBegin(const AudioTimeStamp* now, std::int64_t beginNs, std::size_t frames) noexcept {
  if (now == nullptr) return;
  const std::int64_t lateNs = beginNs - static_cast<std::int64_t>(now->mHostTime);
  // Other clocks than this one, and times that are not the machine's, say nothing.
  constexpr std::int64_t kLongestNs = 10'000'000'000;
  if (lateNs >= 0 && lateNs < kLongestNs) {
    lateness_.add(static_cast<std::uint64_t>(lateNs));
    if (static_cast<double>(lateNs) >= static_cast<double>(frames) * 1e9 / sampleRateHz_)
      add(counters_.lateCycles, 1);
  }
  const double jump = now->mSampleTime - nextSampleTime_;
  if (counters_.cycles.load(std::memory_order_relaxed) != 0 && jump >= 1.0) {
    add(counters_.gaps, 1);
    add(counters_.gapFrames, static_cast<std::uint64_t>(jump));
  }
  nextSampleTime_ = now->mSampleTime + static_cast<double>(frames);
}

/// A list with the streams of `like`, in which every channel carries its signal.
const AudioBufferList* SoakChecker::makeSignals(const AudioBufferList& like, std::uint64_t first,
                                                std::size_t frames) noexcept {
  for (std::size_t c = 0; c < inputs_; ++c) {
    float* const plane = planes_.data() + c * kMostFrames;
    for (std::size_t f = 0; f < frames; ++f) plane[f] = signalSample(c, first + f);
  }
  auto* const list = reinterpret_cast<AudioBufferList*>(listMemory_.data());
  list->mNumberBuffers = 0;
  std::size_t channel = 0;
  for (UInt32 b = 0; b < like.mNumberBuffers; ++b) {
    const UInt32 channels = like.mBuffers[b].mNumberChannels;
    if (channel + channels > inputs_) break;
    float* const stream = streams_.data() + channel * kMostFrames;
    for (UInt32 c = 0; c < channels; ++c) {
      const float* const plane = planes_.data() + (channel + c) * kMostFrames;
      for (std::size_t f = 0; f < frames; ++f) stream[f * channels + c] = plane[f];
    }
    list->mBuffers[list->mNumberBuffers++] = {
        channels, static_cast<UInt32>(frames * channels * sizeof(float)), channels == 0 ? nullptr : stream};
    channel += channels;
  }
  return list;
}

/// Counts the cycle as routed with the table that fits best.
void SoakChecker::compareWith(std::uint64_t lowest, std::uint64_t highest, std::size_t frames) noexcept {
  std::uint64_t samples = 0;
  for (const ChannelSamples& output : deviceOutputs_.all())
    samples += output.first != nullptr ? std::min(output.frames, frames) : 0;
  std::optional<std::uint64_t> fewest;
  std::optional<WrongSample> example;
  for (std::uint64_t number = highest;; --number) {
    std::optional<WrongSample> one;
    const std::uint64_t wrong = wrongSamples(tables_[number], frames, one);
    if (!fewest || wrong < *fewest) {
      fewest = wrong;
      example = one;
    }
    if (wrong == 0 || number <= lowest) break;
  }
  add(counters_.right, samples - *fewest);
  add(counters_.wrong, *fewest);
  if (example && !hasFirstWrong_.load(std::memory_order_relaxed)) {
    firstWrong_ = *example;
    hasFirstWrong_.store(true, std::memory_order_release);
  }
}

std::uint64_t SoakChecker::wrongSamples(const RouteTable& table, std::size_t frames,
                                        std::optional<WrongSample>& example) noexcept {
  std::uint64_t wrong = 0;
  const auto outputs = deviceOutputs_.all();
  for (std::size_t o = 0; o < outputs.size(); ++o) {
    if (outputs[o].first == nullptr) continue;
    mix(table, o, frames);
    for (std::size_t f = 0; f < std::min(frames, outputs[o].frames); ++f) {
      const float found = outputs[o][f];
      if (!differs(wanted_[f], found)) continue;
      ++wrong;
      if (!example)
        example = WrongSample{counters_.cycles.load(std::memory_order_relaxed) - 1, o, f, wanted_[f], found};
    }
  }
  return wrong;
}

/// What the output must carry: the routes in order, each product and each sum rounded.
void SoakChecker::mix(const RouteTable& table, std::size_t output, std::size_t frames) noexcept {
  std::fill_n(wanted_.data(), frames, 0.0F);
  for (const RouteTable::Route& route : table.all()) {
    if (route.output != static_cast<std::int64_t>(output) || route.input < 0 ||
        route.input >= static_cast<std::int64_t>(inputs_)) {
      continue;
    }
    const float* const plane = planes_.data() + static_cast<std::size_t>(route.input) * kMostFrames;
    for (std::size_t f = 0; f < frames; ++f) wanted_[f] += plane[f] * route.gain;
  }
}

void setSoakChecker(SoakChecker* checker) noexcept {
  currentChecker.store(checker, std::memory_order_release);
}

OSStatus soakIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                    const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                    const AudioTimeStamp* outputTime, void* clientData) noexcept {
  SoakChecker* const checker = currentChecker.load(std::memory_order_acquire);
  if (checker == nullptr) return noErr;
  return checker->cycle(device, now, inputData, inputTime, outputData, outputTime, clientData);
}

}  // namespace tolvane::ctl
