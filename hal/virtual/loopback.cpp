#include "hal/virtual/loopback.h"

#include <algorithm>
#include <numeric>

namespace tolvane::hal {

namespace {

/// Calls `visit(channel, first sample or null, stride)` for every channel of the list.
template <typename Visit>
void forEachChannel(const AudioBufferList& list, const Visit& visit) noexcept {
  std::size_t channel = 0;
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    const AudioBuffer& buffer = list.mBuffers[b];
    auto* const data = static_cast<float*>(buffer.mData);
    for (UInt32 c = 0; c < buffer.mNumberChannels; ++c, ++channel)
      visit(channel, data == nullptr ? nullptr : data + c, buffer.mNumberChannels);
  }
}

}  // namespace

Loopback::Loopback(const StreamLayout& outputs, std::uint32_t maxFrames)
    : maxFrames_(maxFrames),
      channels_(std::accumulate(outputs.begin(), outputs.end(), std::size_t{0}) * maxFrames) {}

void Loopback::fill(std::uint64_t /*firstFrame*/, std::uint32_t frames, AudioBufferList& input) noexcept {
  forEachChannel(input, [&](std::size_t channel, float* to, std::size_t stride) noexcept {
    if (to == nullptr) return;
    const std::size_t first = channel * maxFrames_;
    const std::uint32_t known = first < channels_.size() ? std::min(frames, frames_) : 0;
    for (std::uint32_t f = 0; f < frames; ++f) to[f * stride] = f < known ? channels_[first + f] : 0.0F;
  });
}

void Loopback::observe(std::uint64_t /*firstFrame*/, std::uint32_t frames,
                       const AudioBufferList& output) noexcept {
  frames_ = std::min(frames, maxFrames_);
  forEachChannel(output, [&](std::size_t channel, const float* from, std::size_t stride) noexcept {
    for (std::uint32_t f = 0; f < frames_; ++f)
      channels_[channel * maxFrames_ + f] = from == nullptr ? 0.0F : from[f * stride];
  });
}

}  // namespace tolvane::hal
