#include "hal/alsa/channel_buffers.h"

#include <algorithm>

namespace tolvane::hal::alsa {

namespace {

// Channels begin whole cache lines apart; the padding between them is unused.
constexpr std::size_t kLineFloats = 16;

std::size_t listWords(std::size_t channels) noexcept {
  const std::size_t bytes = offsetof(AudioBufferList, mBuffers) + channels * sizeof(AudioBuffer);
  return std::max(bytes, sizeof(AudioBufferList)) / sizeof(std::uint64_t);
}

}  // namespace

ChannelBuffers::ChannelBuffers(std::size_t channels, std::size_t frames)
    : channels_(channels),
      strideFloats_((frames + kLineFloats - 1) / kLineFloats * kLineFloats),
      samples_(channels * strideFloats_),
      listWords_(std::make_unique<std::uint64_t[]>(listWords(channels))) {
  list().mNumberBuffers = static_cast<UInt32>(channels);
  for (std::size_t c = 0; c < channels; ++c) {
    list().mBuffers[c] = {1, static_cast<UInt32>(frames * sizeof(float)), channel(c)};
  }
}

AudioBufferList& ChannelBuffers::list() noexcept {
  return *reinterpret_cast<AudioBufferList*>(listWords_.get());
}

}  // namespace tolvane::hal::alsa
