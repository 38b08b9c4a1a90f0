#include "hal/alsa/channel_buffers.h"

#include "hal/support/sample_memory.h"

namespace tolvane::hal::alsa {

ChannelBuffers::ChannelBuffers(std::size_t channels, std::size_t frames)
    : channels_(channels),
      strideFloats_(wholeCacheLines(frames * sizeof(float)) / sizeof(float)),
      samples_(channels * strideFloats_ * sizeof(float)),
      buffers_(channels) {
  for (std::size_t c = 0; c < channels; ++c) buffers_.set(c, 1, frames, channel(c));
}

}  // namespace tolvane::hal::alsa
