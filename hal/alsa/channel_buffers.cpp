#include "hal/alsa/channel_buffers.h"

namespace tolvane::hal::alsa {

namespace {

// Channels begin whole cache lines apart; the padding between them is unused.
constexpr std::size_t kLineFloats = 16;

}  // namespace

ChannelBuffers::ChannelBuffers(std::size_t channels, std::size_t frames)
    : channels_(channels),
      strideFloats_((frames + kLineFloats - 1) / kLineFloats * kLineFloats),
      samples_(channels * strideFloats_),
      buffers_(channels) {
  for (std::size_t c = 0; c < channels; ++c) buffers_.set(c, 1, frames, channel(c));
}

}  // namespace tolvane::hal::alsa
