#include "core/mix/plain_mixer.h"

#include <cstring>

namespace tolvane {

namespace {

void addChannel(const ChannelSlot& in, const ChannelSlot& out, float gain, std::int64_t frames) noexcept {
  const std::ptrdiff_t inStride = in.stride;
  const std::ptrdiff_t outStride = out.stride;
  for (std::int64_t f = 0; f < frames; ++f) out.data[f * outStride] += in.data[f * inStride] * gain;
}

}  // namespace

void clearOutputs(AudioBufferList& output) noexcept {
  AudioBuffer* const buffers = output.mBuffers;
  for (UInt32 b = 0; b < output.mNumberBuffers; ++b) {
    if (buffers[b].mNumberChannels != 0 && buffers[b].mData != nullptr) {
      std::memset(buffers[b].mData, 0, buffers[b].mDataByteSize);
    }
  }
}

void mixPlainly(const CycleRoutes& routes, const ChannelTable& in, const ChannelTable& out,
                std::int64_t frames) noexcept {
  for (std::int32_t i = 0; i < routes.count; ++i) {
    const PatchEntry& entry = routes.entries[i];
    addChannel(in[entry.src], out[entry.dst], entry.gain, frames);
  }
}

}  // namespace tolvane
