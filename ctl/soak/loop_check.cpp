#include "ctl/soak/loop_check.h"

#include <algorithm>
#include <bit>

#include "ctl/soak/signal.h"

namespace tolvane::ctl {

namespace {

bool sameBits(float one, float other) noexcept {
  return std::bit_cast<std::uint32_t>(one) == std::bit_cast<std::uint32_t>(other);
}

}  // namespace

LoopCheck::LoopCheck(std::size_t inputs, std::size_t outputs)
    : outputs_(std::min(outputs, kMostOutputs)), loopOf_(inputs), history_(outputs_ * kHistoryFrames) {}

void LoopCheck::cycle(std::uint64_t first, std::size_t frames, std::span<const ChannelSamples> inputs,
                      std::span<const ChannelSamples> outputs) noexcept {
  const bool isSearching = isSearching_.load(std::memory_order_acquire);
  for (std::size_t i = 0; i < std::min(inputs.size(), loopOf_.size()); ++i) {
    const ChannelSamples& input = inputs[i];
    std::optional<Loop>& loop = loopOf_[i];
    if (input.first == nullptr || input.frames < frames) {
      if (loop) add(missing_, frames);
    } else if (loop) {
      compare(*loop, first, frames, input);
    } else if (isSearching && (loop = find(first, frames, input))) {
      add(loops_, 1);
      delayFrames_.store(std::max(delayFrames(), loop->delay), std::memory_order_relaxed);
    }
  }
  keep(first, frames, outputs);
}

bool LoopCheck::isSame(const Loop& loop, std::uint64_t first, std::size_t frames,
                       const ChannelSamples& input) const noexcept {
  for (std::size_t f = 0; f < frames; ++f) {
    if (!sameBits(input[f], sent(loop.output, first + f - loop.delay))) return false;
  }
  return true;
}

/// The loop that this input's samples name. They name it if they are the whole cycle's.
std::optional<LoopCheck::Loop> LoopCheck::find(std::uint64_t first, std::size_t frames,
                                               const ChannelSamples& input) const noexcept {
  const auto name = signalName(input[0]);
  if (!name || name->channel >= outputs_) return std::nullopt;
  // The name repeats: take the latest frame of this name.
  const std::uint64_t delay = (first - name->frame) % kSignalFrames;
  const Loop loop{static_cast<std::size_t>(name->channel), delay};
  const bool isSent = delay <= first && delay >= frames;
  if (!isSent || !isSame(loop, first, frames, input)) return std::nullopt;
  return loop;
}

/// The delay at which the output was sent what the input has; none if it is silent or unknown.
std::optional<std::uint64_t> LoopCheck::newDelay(std::size_t output, std::uint64_t first, std::size_t frames,
                                                 const ChannelSamples& input) const noexcept {
  bool isSilent = true;
  for (std::size_t f = 0; f < frames && isSilent; ++f) isSilent = input[f] == 0.0F;
  if (isSilent) return std::nullopt;
  for (std::uint64_t delay = frames; delay <= std::min(first, kLongestDelay); ++delay) {
    if (isSame({output, delay}, first, frames, input)) return delay;
  }
  return std::nullopt;
}

void LoopCheck::compare(Loop& loop, std::uint64_t first, std::size_t frames,
                        const ChannelSamples& input) noexcept {
  if (isSame(loop, first, frames, input)) return add(right_, frames);
  if (const auto delay = newDelay(loop.output, first, frames, input)) {
    add(breaks_, 1);
    add(missing_, *delay > loop.delay ? *delay - loop.delay : loop.delay - *delay);
    loop.delay = *delay;
    return add(right_, frames);
  }
  for (std::size_t f = 0; f < frames; ++f) {
    const bool isRight = sameBits(input[f], sent(loop.output, first + f - loop.delay));
    add(isRight ? right_ : input[f] == 0.0F ? missing_ : wrong_, 1);
  }
}

void LoopCheck::keep(std::uint64_t first, std::size_t frames,
                     std::span<const ChannelSamples> outputs) noexcept {
  for (std::size_t o = 0; o < std::min(outputs_, outputs.size()); ++o) {
    const ChannelSamples& output = outputs[o];
    const bool isWhole = output.first != nullptr && output.frames >= frames;
    for (std::size_t f = 0; f < frames; ++f)
      history_[o * kHistoryFrames + (first + f) % kHistoryFrames] = isWhole ? output[f] : 0.0F;
  }
}

}  // namespace tolvane::ctl
